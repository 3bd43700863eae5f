#include "platform/Platform.h"

#include "base/Logging.h"
#include "platform/linux/BusProbe.h"
#include "platform/linux/DBusSingleInstance.h"
#include "platform/linux/DBusSystemEvents.h"
#include "platform/linux/GioUrlOpener.h"
#include "platform/linux/TokenWindowActivator.h"
#include "platform/linux/x11/X11ScreenCover.h"
#include "platform/linux/x11/X11WindowActivator.h"
#include "platform/null/PlainScreenCover.h"

#include <QGuiApplication>

namespace kelp {

namespace {

/// A Linux desktop: D-Bus for its services, X11 or another window system for its screens.
class LinuxPlatform final : public Platform
{
public:
    [[nodiscard]] std::unique_ptr<ScreenCover> makeScreenCover() override
    {
        if (isX11())
            return std::make_unique<X11ScreenCover>();
        return std::make_unique<PlainScreenCover>();
    }
    [[nodiscard]] std::unique_ptr<SingleInstance> makeSingleInstance(Clock &clock) override
    {
        return std::make_unique<DBusSingleInstance>(clock);
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
    [[nodiscard]] static bool isX11() { return QGuiApplication::platformName() == QLatin1String("xcb"); }
};

} // namespace

void Platform::prepare()
{
    // Qt asks the session bus for the accessibility bus when the event loop starts, and waits for the answer.
    constexpr double patience = 1; // seconds
    if (!busHangs(sessionBusAddress(), patience))
        return;
    qCWarning(logPlatform) << "the session bus does not answer; going on without one";
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
}

std::unique_ptr<Platform> Platform::make()
{
    return std::make_unique<LinuxPlatform>();
}

} // namespace kelp
