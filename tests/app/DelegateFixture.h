#pragma once

#include "app/AppDelegate.h"
#include "support/FakeClock.h"
#include "support/FakePlatform.h"
#include "support/Sandbox.h"

#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

namespace kelp {

class SettingsView;

} // namespace kelp

namespace kelp::test {

/// Kelp as it is wired, over a desktop of fakes and folders of its own, with a sandbox for a Google. It is 2026-01-01
/// 09:00 UTC, and time stands still unless a test lets it pass.
class DelegateFixture
{
public:
    DelegateFixture();
    ~DelegateFixture();

    /// These come before `launch`.
    /// With these meetings of the account that `signIn` is about.
    [[nodiscard]] bool startSandbox(const QJsonArray &events);
    [[nodiscard]] bool writePreferences(const QJsonObject &preferences);
    /// Somebody is, with these preferences besides what it takes; nothing is to be heard.
    [[nodiscard]] bool signIn(const QJsonObject &morePreferences = {});

    /// Returns when the first refresh is over, where somebody is signed in.
    [[nodiscard]] bool launch();
    /// Lets the network and the event loop go on until this is so; the time stays.
    template<typename Condition>
    [[nodiscard]] bool until(Condition condition)
    {
        return QTest::qWaitFor([&] {
            clock.advance(0);
            return condition();
        });
    }

    [[nodiscard]] SettingsView *findPanel() const; ///< null before it was first needed
    [[nodiscard]] SettingsView &panel() const;
    [[nodiscard]] bool isPanelVisible() const;
    [[nodiscard]] bool isOverlayShown() const { return !platform.cover->visible().isEmpty(); }
    /// What the overlay on the first screen says, and a button of it.
    [[nodiscard]] QStringList texts() const;
    [[nodiscard]] bool reads(const QString &text) const { return texts().contains(text); }
    void press(const QString &button) const;
    void pressReturn() const;
    void pressSlashes();
    [[nodiscard]] QJsonObject preferences() const;

    FakeClock clock;
    FakePlatform platform;
    Sandbox sandbox;
    std::unique_ptr<AppDelegate> delegate;

private:
    QTemporaryDir m_home;
    double m_keyTime = 0; ///< seconds
};

/// Somebody whom the sandbox knows and Kelp does not yet.
inline const QString furtherAccount = QStringLiteral("ada@example.com");

/// A meeting of half an hour that begins so many seconds after the fixture's start.
[[nodiscard]] QJsonObject meetingIn(int seconds, const QString &title);

} // namespace kelp::test
