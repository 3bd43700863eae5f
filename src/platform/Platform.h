#pragma once

#include <memory>

namespace kelp {

class Clock;
class DesktopAppearance;
class KeySource;
class LoginItem;
class MusicPlayers;
class ScreenCover;
class SingleInstance;
class StatusItem;
class StatusPictures;
class SystemEvents;
class UrlOpener;
class WindowActivator;

/// The desktop that Kelp runs on.
class Platform
{
public:
    virtual ~Platform() = default;

    [[nodiscard]] virtual std::unique_ptr<DesktopAppearance> makeDesktopAppearance() = 0;
    /// The keys of all applications, where the desktop tells of them.
    [[nodiscard]] virtual std::unique_ptr<KeySource> makeKeySource(Clock &clock) = 0;
    [[nodiscard]] virtual std::unique_ptr<LoginItem> makeLoginItem() = 0;
    [[nodiscard]] virtual std::unique_ptr<MusicPlayers> makeMusicPlayers(Clock &clock) = 0;
    [[nodiscard]] virtual std::unique_ptr<ScreenCover> makeScreenCover() = 0;
    [[nodiscard]] virtual std::unique_ptr<SingleInstance> makeSingleInstance(Clock &clock) = 0;
    [[nodiscard]] virtual std::unique_ptr<StatusItem>
    makeStatusItem(Clock &clock, std::shared_ptr<const StatusPictures> pictures) = 0;
    [[nodiscard]] virtual std::unique_ptr<SystemEvents> makeSystemEvents() = 0;
    [[nodiscard]] virtual std::unique_ptr<UrlOpener> makeUrlOpener() = 0;
    [[nodiscard]] virtual std::unique_ptr<WindowActivator> makeWindowActivator() = 0;

    /// What has to be done before the QApplication is made.
    static void prepare();
    /// The one this build is for. Needs the QApplication.
    [[nodiscard]] static std::unique_ptr<Platform> make();
};

} // namespace kelp
