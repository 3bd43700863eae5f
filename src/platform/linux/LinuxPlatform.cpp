#include "platform/Platform.h"

#include "platform/linux/DBusSingleInstance.h"
#include "platform/linux/DBusSystemEvents.h"
#include "platform/linux/GioUrlOpener.h"
#include "platform/linux/x11/X11Activation.h"
#include "platform/linux/x11/X11ScreenCover.h"
#include "platform/null/PlainScreenCover.h"

#include <QGuiApplication>
#include <QWidget>

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
    void activate(QWidget &window) override
    {
        window.raise();
        window.activateWindow();
        if (isX11())
            activateX11Window(window);
    }

private:
    [[nodiscard]] static bool isX11() { return QGuiApplication::platformName() == QLatin1String("xcb"); }
};

} // namespace

std::unique_ptr<Platform> Platform::make() { return std::make_unique<LinuxPlatform>(); }

} // namespace kelp
