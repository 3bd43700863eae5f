#pragma once

#include "platform/DesktopAppearance.h"
#include "platform/linux/InterfaceSettings.h"

#include <QMap>
#include <QVariantMap>

class QDBusMessage;
class QDBusVariant;

namespace kelp {

/// DesktopAppearance from the desktop's portal (org.freedesktop.portal.Settings on the session bus), and from GSettings
/// where there is no portal or it does not know of animations. Motion is reduced when any of them asks for that.
///
///     connect ──> ask the portal ──> all is known, or ──> open GSettings
class PortalAppearance final : public DesktopAppearance
{
    Q_OBJECT

public:
    explicit PortalAppearance(QObject *parent = nullptr);

    [[nodiscard]] bool reducesMotion() const override { return m_reducesMotion; }
    [[nodiscard]] std::optional<bool> isDark() const override { return m_isDark; }
    [[nodiscard]] std::optional<QColor> accent() const override { return m_accent; }

private Q_SLOTS:
    void onSettingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void connectToPortal();
    void askPortal();
    void adopt(const QDBusMessage &answer);
    void update();
    [[nodiscard]] QVariant portalValue(const QString &group, const QString &key) const;

    QMap<QString, QVariantMap> m_portal; ///< what it said, by group and key
    InterfaceSettings m_interface;
    bool m_reducesMotion = false;
    std::optional<bool> m_isDark;
    std::optional<QColor> m_accent;
};

} // namespace kelp
