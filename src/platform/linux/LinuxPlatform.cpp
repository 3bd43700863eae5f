#include "platform/Platform.h"

#include "base/Logging.h"
#include "platform/linux/AutostartEntry.h"
#include "platform/linux/BusProbe.h"
#include "platform/linux/DBusSingleInstance.h"
#include "platform/linux/DBusStatusItem.h"
#include "platform/linux/DBusSystemEvents.h"
#include "platform/linux/GioUrlOpener.h"
#include "platform/linux/MprisPlayers.h"
#include "platform/linux/MprisRegistry.h"
#include "platform/linux/OwnEnvironment.h"
#include "platform/linux/PortalAppearance.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/TokenWindowActivator.h"
#include "platform/linux/evdev/EvdevKeySource.h"
#include "platform/linux/wayland/FullScreenCover.h"
#include "platform/linux/wayland/LayerShellCover.h"
#include "platform/linux/x11/X11KeySource.h"
#include "platform/linux/x11/X11ScreenCover.h"
#include "platform/linux/x11/X11WindowActivator.h"
#include "platform/mac/AppleScriptPlayers.h"
#include "platform/null/PlainScreenCover.h"

#include <QFileInfo>
#include <QGuiApplication>

namespace kelp {

namespace {

/// A Linux desktop: D-Bus for its services, X11 or another window system for its screens.
class LinuxPlatform final : public Platform
{
public:
    [[nodiscard]] std::unique_ptr<DesktopAppearance> makeDesktopAppearance() override
    {
        return std::make_unique<PortalAppearance>();
    }
    [[nodiscard]] std::unique_ptr<KeySource> makeKeySource(Clock &clock) override
    {
        // An X server within a Wayland desktop has only the keys for its own clients.
        if (isX11() && !X11KeySource::isWithinWayland())
            return std::make_unique<X11KeySource>();
        return std::make_unique<EvdevKeySource>(clock);
    }
    [[nodiscard]] std::unique_ptr<MusicPlayers> makeMusicPlayers(Clock &clock) override
    {
        if (QFileInfo(AppleScriptPlayers::systemRunner).isExecutable())
            return std::make_unique<AppleScriptPlayers>(std::make_unique<MprisRegistry>(sessionConnection));
        return std::make_unique<MprisPlayers>(sessionConnection, clock);
    }
    [[nodiscard]] std::unique_ptr<LoginItem> makeLoginItem() override { return std::make_unique<AutostartEntry>(); }
    [[nodiscard]] std::unique_ptr<ScreenCover> makeScreenCover() override
    {
        if (isX11())
            return std::make_unique<X11ScreenCover>();
        if (!isWayland())
            return std::make_unique<PlainScreenCover>();
        if (std::unique_ptr<LayerShell> shell = LayerShell::bind())
            return std::make_unique<LayerShellCover>(std::move(shell));
        return std::make_unique<FullScreenCover>();
    }
    [[nodiscard]] std::unique_ptr<SingleInstance> makeSingleInstance(Clock &clock) override
    {
        return std::make_unique<DBusSingleInstance>(clock);
    }
    [[nodiscard]] std::unique_ptr<StatusItem> makeStatusItem(Clock &clock,
                                                             std::shared_ptr<const StatusPictures> pictures) override
    {
        return std::make_unique<DBusStatusItem>(clock, std::move(pictures));
    }
    [[nodiscard]] std::unique_ptr<SystemEvents> makeSystemEvents() override
    {
        return std::make_unique<DBusSystemEvents>();
    }
    [[nodiscard]] std::unique_ptr<UrlOpener> makeUrlOpener() override { return std::make_unique<GioUrlOpener>(); }
    [[nodiscard]] std::unique_ptr<WindowActivator> makeWindowActivator() override
    {
        if (isX11())
            return std::make_unique<X11WindowActivator>();
        return std::make_unique<TokenWindowActivator>();
    }

private:
    [[nodiscard]] static bool isWayland()
    {
        return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    }
    [[nodiscard]] static bool isX11() { return QGuiApplication::platformName() == QLatin1String("xcb"); }
};

} // namespace

void Platform::prepare()
{
    LayerShellCover::allow();
    // Qt asks the session bus for the accessibility bus when the event loop starts, and waits for the answer.
    constexpr double patience = 1; // seconds
    if (!busHangs(sessionBusAddress(), patience))
        return;
    qCWarning(logPlatform) << "the session bus does not answer; going on without one";
    ownEnvironment::set("DBUS_SESSION_BUS_ADDRESS", "disabled:");
}

std::unique_ptr<Platform> Platform::make()
{
    return std::make_unique<LinuxPlatform>();
}

} // namespace kelp
