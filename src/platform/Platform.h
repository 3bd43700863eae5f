#pragma once

#include <memory>

class QWidget;

namespace kelp {

class Clock;
class ScreenCover;
class SingleInstance;
class SystemEvents;
class UrlOpener;

/// The desktop that Kelp runs on.
class Platform
{
public:
    virtual ~Platform() = default;

    [[nodiscard]] virtual std::unique_ptr<ScreenCover> makeScreenCover() = 0;
    [[nodiscard]] virtual std::unique_ptr<SingleInstance> makeSingleInstance(Clock &clock) = 0;
    [[nodiscard]] virtual std::unique_ptr<SystemEvents> makeSystemEvents() = 0;
    [[nodiscard]] virtual std::unique_ptr<UrlOpener> makeUrlOpener() = 0;
    /// Brings a window that is shown to the front and gives it the keyboard, because the user has asked for it.
    virtual void activate(QWidget &window) = 0;

    /// The one this build is for. Needs the QApplication.
    [[nodiscard]] static std::unique_ptr<Platform> make();
};

} // namespace kelp
