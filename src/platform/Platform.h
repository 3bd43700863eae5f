#pragma once

#include <memory>

namespace kelp {

class Clock;
class ScreenCover;
class SingleInstance;
class SystemEvents;
class UrlOpener;
class WindowActivator;

/// The desktop that Kelp runs on.
class Platform
{
public:
    virtual ~Platform() = default;

    [[nodiscard]] virtual std::unique_ptr<ScreenCover> makeScreenCover() = 0;
    [[nodiscard]] virtual std::unique_ptr<SingleInstance> makeSingleInstance(Clock &clock) = 0;
    [[nodiscard]] virtual std::unique_ptr<SystemEvents> makeSystemEvents() = 0;
    [[nodiscard]] virtual std::unique_ptr<UrlOpener> makeUrlOpener() = 0;
    [[nodiscard]] virtual std::unique_ptr<WindowActivator> makeWindowActivator() = 0;

    /// What has to be done before the QApplication is made.
    static void prepare();
    /// The one this build is for. Needs the QApplication.
    [[nodiscard]] static std::unique_ptr<Platform> make();
};

} // namespace kelp
