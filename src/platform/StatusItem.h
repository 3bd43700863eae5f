#pragma once

#include <QImage>
#include <QObject>
#include <QString>

namespace kelp {

/// What a StatusItem shows.
struct StatusLook
{
    QString icon;          ///< the name of the picture for desktops that show the title beside it
    QString iconWithTitle; ///< the one that has the title drawn in, for all others
    QString title;         ///< " 5m"; may be empty
    QString description;   ///< what a screen reader says for the icon

    friend bool operator==(const StatusLook &, const StatusLook &) = default;
};

/// What follows the name of a picture in one colour, to which desktops give their own.
inline const QString symbolicSuffix = QStringLiteral("-symbolic");

/// The pictures that a StatusItem may have to show. They stay the same.
class StatusPictures
{
public:
    virtual ~StatusPictures() = default;

    /// Where every picture lies as <name>.svg, to be seen on dark and on light grounds, and as <name>-symbolic.svg.
    /// All of them at any time: desktops keep a list of what is there. Empty where there are no files.
    [[nodiscard]] virtual QString folder() const = 0;
    /// <name>.svg with `pixels` × `pixels`.
    [[nodiscard]] virtual QImage image(const QString &name, int pixels) const = 0;
};

/// Kelp's item in the desktop's tray, where there is one: it may come, go and come back at any time.
class StatusItem : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Shows this from now on. The item appears with the first call.
    virtual void show(const StatusLook &look) = 0;

Q_SIGNALS:
    /// The user has clicked it; `token` is the right to raise a window, empty where there is none.
    void activated(const QString &token);
};

} // namespace kelp
