#include "platform/linux/PortalAppearance.h"

#include "base/Logging.h"
#include "platform/linux/DetachedTask.h"
#include "platform/linux/SessionBus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html
const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString interface = u"org.freedesktop.portal.Settings"_s;
constexpr int answerTimeOut = 5000; ///< milliseconds; the call may have to start the portal first

const QString appearance = u"org.freedesktop.appearance"_s;
const QString colourScheme = u"color-scheme"_s;    // 0 no preference, 1 dark, 2 light
const QString accentColour = u"accent-color"_s;    // red, green and blue, 0 to 1
const QString reducedMotion = u"reduced-motion"_s; // 0 no preference, 1 reduced
const QString gnome = u"org.gnome.desktop.interface"_s;
const QString enableAnimations = u"enable-animations"_s;
const QString kde = u"org.kde.kdeglobals.KDE"_s;
const QString durationFactor = u"AnimationDurationFactor"_s; // a text; "0" is no animation

/// Portals differ in how often they wrap a value.
QVariant unwrapped(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

std::optional<bool> darkOf(const QVariant &value)
{
    constexpr uint dark = 1;
    constexpr uint light = 2;
    if (value.metaType() != QMetaType::fromType<uint>())
        return {};
    const uint scheme = value.toUInt();
    return scheme == dark || scheme == light ? std::optional(scheme == dark) : std::nullopt;
}

/// Anything but three numbers from 0 to 1 means that there is none.
std::optional<QColor> colourOf(const QVariant &value)
{
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return {};
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != "(ddd)"_L1)
        return {};
    double parts[3];
    argument.beginStructure();
    for (double &each : parts)
        argument >> each;
    argument.endStructure();
    for (const double each : parts) {
        if (!(each >= 0 && each <= 1))
            return {};
    }
    return QColor::fromRgbF(static_cast<float>(parts[0]), static_cast<float>(parts[1]), static_cast<float>(parts[2]));
}

} // namespace

PortalAppearance::PortalAppearance(QObject *parent) : DesktopAppearance(parent)
{
    connect(&m_interface, &InterfaceSettings::changed, this, &PortalAppearance::update);
    runDetached<bool>(
        this, [] { return connectToSessionBus().isConnected(); },
        [this](bool connected) {
            if (connected)
                connectToPortal();
            else
                m_interface.open();
        });
}

void PortalAppearance::connectToPortal()
{
    // No sender is named, because asking the bus for its owner would block. A forged signal does no more than to change
    // how things look.
    connectToSessionBus().connect({}, path, interface, u"SettingChanged"_s, this,
                                  SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    askPortal();
}

void PortalAppearance::askPortal()
{
    QDBusMessage ask = QDBusMessage::createMethodCall(service, path, interface, u"ReadAll"_s);
    ask << QStringList{appearance, gnome, kde};
    auto *watcher = new QDBusPendingCallWatcher(connectToSessionBus().asyncCall(ask, answerTimeOut), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        adopt(watcher->reply());
    });
}

void PortalAppearance::adopt(const QDBusMessage &answer)
{
    if (answer.type() == QDBusMessage::ReplyMessage && answer.signature() == "a{sa{sv}}"_L1)
        answer.arguments().constFirst().value<QDBusArgument>() >> m_portal;
    else
        qCInfo(logPlatform) << "no portal tells of the desktop's appearance:" << answer.errorMessage();
    if (!portalValue(gnome, enableAnimations).isValid())
        m_interface.open();
    update();
}

void PortalAppearance::onSettingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    if (group != appearance && group != gnome && group != kde)
        return;
    m_portal[group].insert(key, value.variant());
    update();
}

void PortalAppearance::update()
{
    const QVariant animations = portalValue(gnome, enableAnimations);
    const QVariant factor = portalValue(kde, durationFactor);
    bool isNumber = false;
    const bool reducesMotion = portalValue(appearance, reducedMotion).toUInt() == 1 ||
                               (animations.isValid() && !animations.toBool()) ||
                               (factor.toDouble(&isNumber) == 0 && isNumber) || m_interface.reducesMotion();
    const QVariant scheme = portalValue(appearance, colourScheme);
    std::optional<bool> isDark = darkOf(scheme);
    if (!scheme.isValid() && m_interface.prefersDark())
        isDark = true;
    const std::optional<QColor> accent = colourOf(portalValue(appearance, accentColour));
    if (reducesMotion == m_reducesMotion && isDark == m_isDark && accent == m_accent)
        return;
    m_reducesMotion = reducesMotion;
    m_isDark = isDark;
    m_accent = accent;
    Q_EMIT changed();
}

QVariant PortalAppearance::portalValue(const QString &group, const QString &key) const
{
    return unwrapped(m_portal.value(group).value(key));
}

} // namespace kelp
