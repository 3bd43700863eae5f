#pragma once

#include "platform/StatusItem.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QHash>

#include <functional>
#include <memory>

namespace kelp {

/// A picture as the StatusNotifierItem protocol has it: 32 bits a pixel, alpha first, not premultiplied.
struct DBusPixmap
{
    int width = 0;
    int height = 0;
    QByteArray pixels;
};
using DBusPixmaps = QList<DBusPixmap>;

struct DBusToolTip
{
    QString icon;
    DBusPixmaps pixmaps;
    QString title;
    QString text;
};

/// What hosts of the tray see of Kelp: freedesktop.org's interface
/// StatusNotifierItem, with what KDE and Ayatana have added to it. There is no menu; every way of clicking is the same.
class DBusStatusObject : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(uint WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconThemePath READ iconThemePath CONSTANT)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(kelp::DBusPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(QString IconAccessibleDesc READ description)
    Q_PROPERTY(QString OverlayIconName READ nothing CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ nothing CONSTANT)
    Q_PROPERTY(kelp::DBusToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)
    Q_PROPERTY(QString XAyatanaLabel READ title)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide CONSTANT)

public:
    explicit DBusStatusObject(std::shared_ptr<const StatusPictures> pictures);

    /// What the host does by itself: give symbolic pictures its own colour; show the title beside the icon.
    void setHost(bool tints, bool showsTitle);
    /// Announces what is another one now.
    void setLook(const StatusLook &look);

    std::function<void(const QString &token)> onActivated;

public Q_SLOTS:
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    void ProvideXdgActivationToken(const QString &token);
    void Scroll(int, const QString &) {}

Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewToolTip();
    void XAyatanaNewLabel(const QString &label, const QString &guide);

private:
    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] QString id() const { return QStringLiteral("app.kelp.Kelp"); }
    [[nodiscard]] QString status() const { return QStringLiteral("Active"); }
    [[nodiscard]] uint windowId() const { return 0; }
    [[nodiscard]] QString nothing() const { return {}; }
    [[nodiscard]] bool itemIsMenu() const { return false; }
    [[nodiscard]] QDBusObjectPath menu() const { return QDBusObjectPath(QStringLiteral("/NO_DBUSMENU")); }
    [[nodiscard]] QString labelGuide() const { return QStringLiteral(" 60m"); }
    [[nodiscard]] QString title() const { return m_look.title; }
    [[nodiscard]] QString description() const { return m_look.description; }
    [[nodiscard]] QString iconThemePath() const { return m_iconFolder; }
    [[nodiscard]] QString iconName() const;
    [[nodiscard]] DBusPixmaps iconPixmap() const;
    [[nodiscard]] DBusToolTip toolTip() const;
    [[nodiscard]] const QString &picture() const;

    std::shared_ptr<const StatusPictures> m_pictures;
    QString m_iconFolder; ///< empty: hosts have to take the pixmaps
    bool m_hostTints = false;
    bool m_hostShowsTitle = false;
    StatusLook m_look;
    QString m_token;         ///< for the click that follows
    mutable QString m_drawn; ///< the picture of m_pixmaps
    mutable DBusPixmaps m_pixmaps;
};

} // namespace kelp

Q_DECLARE_METATYPE(kelp::DBusPixmap)
Q_DECLARE_METATYPE(kelp::DBusToolTip)
