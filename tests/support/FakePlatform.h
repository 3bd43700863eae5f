#pragma once

#include "platform/DesktopAppearance.h"
#include "platform/KeySource.h"
#include "platform/Platform.h"
#include "platform/SingleInstance.h"
#include "platform/StatusItem.h"
#include "platform/SystemEvents.h"
#include "platform/WindowActivator.h"
#include "support/FakeLoginItem.h"
#include "support/FakeMusicPlayers.h"
#include "support/FakeScreenCover.h"
#include "support/FakeUrlOpener.h"

#include <QList>
#include <QWidget>

namespace kelp::test {

/// A desktop on which nothing moves.
class FakeAppearance final : public DesktopAppearance
{
public:
    [[nodiscard]] bool reducesMotion() const override { return true; }
    [[nodiscard]] std::optional<bool> isDark() const override { return {}; }
    [[nodiscard]] std::optional<QColor> accent() const override { return {}; }
};

/// Keys that a test presses.
class FakeKeySource final : public KeySource
{
public:
    void start() override {}
    [[nodiscard]] bool seesAll() const override { return true; }
};

/// An item that notes what it was asked to show.
class FakeStatusItem final : public StatusItem
{
public:
    void show(const StatusLook &look) override { looks.append(look); }

    QList<StatusLook> looks;
};

/// Whom it activates has the keyboard, until the window is hidden.
class FakeActivator final : public WindowActivator
{
public:
    void keepOutOfLists(QWidget &) override {}
    void activate(QWidget &window, const QString &) override
    {
        window.show();
        window.activateWindow();
        active = &window;
    }
    [[nodiscard]] bool isActive(const QWidget &window) const override
    {
        return active == &window && window.isVisible();
    }
    void whenLeft(QWidget &, std::function<void()>) override {}

    const QWidget *active = nullptr;
};

/// A desktop of fakes. What it made belongs to whom it was made for; `keys` and so on point there.
class FakePlatform final : public Platform
{
public:
    [[nodiscard]] std::unique_ptr<DesktopAppearance> makeDesktopAppearance() override
    {
        return std::make_unique<FakeAppearance>();
    }
    [[nodiscard]] std::unique_ptr<KeySource> makeKeySource(Clock &) override { return made(keys); }
    [[nodiscard]] std::unique_ptr<LoginItem> makeLoginItem() override { return std::make_unique<FakeLoginItem>(); }
    [[nodiscard]] std::unique_ptr<MusicPlayers> makeMusicPlayers(Clock &) override
    {
        return std::make_unique<FakeMusicPlayers>();
    }
    [[nodiscard]] std::unique_ptr<ScreenCover> makeScreenCover() override { return made(cover); }
    [[nodiscard]] std::unique_ptr<SingleInstance> makeSingleInstance(Clock &) override { return {}; }
    [[nodiscard]] std::unique_ptr<StatusItem> makeStatusItem(Clock &, std::shared_ptr<const StatusPictures>) override
    {
        return made(item);
    }
    [[nodiscard]] std::unique_ptr<SystemEvents> makeSystemEvents() override { return std::make_unique<SystemEvents>(); }
    [[nodiscard]] std::unique_ptr<UrlOpener> makeUrlOpener() override { return made(opener); }
    [[nodiscard]] std::unique_ptr<WindowActivator> makeWindowActivator() override { return made(activator); }

    FakeKeySource *keys = nullptr;
    FakeScreenCover *cover = nullptr;
    FakeStatusItem *item = nullptr;
    FakeUrlOpener *opener = nullptr;
    FakeActivator *activator = nullptr;

private:
    template<typename Fake>
    [[nodiscard]] static std::unique_ptr<Fake> made(Fake *&where)
    {
        auto fake = std::make_unique<Fake>();
        where = fake.get();
        return fake;
    }
};

} // namespace kelp::test
