#pragma once

#include <QByteArray>
#include <QImage>
#include <QObject>
#include <QString>
#include <QStringList>

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

/// The pictures that a StatusItem may have to show. They are asked for on any thread, and stay the same.
class StatusPictures
{
public:
    virtual ~StatusPictures() = default;

    [[nodiscard]] virtual QStringList names() const = 0;
    /// The picture in one colour, for desktops that give it theirs.
    [[nodiscard]] virtual QByteArray symbolicSvg(const QString &name) const = 0;
    /// The picture to be seen on dark and on light grounds, for those that do not.
    [[nodiscard]] virtual QByteArray svg(const QString &name) const = 0;
    /// The same with `pixels` × `pixels`.
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
