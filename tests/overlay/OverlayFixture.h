#pragma once

#include "overlay/OverlayController.h"
#include "overlay/OverlayView.h"
#include "preferences/Preferences.h"
#include "support/FakeClock.h"
#include "support/FakeScreenCover.h"
#include "support/FakeUrlOpener.h"
#include "support/OffscreenScreens.h"
#include "support/RecordedSounds.h"
#include "support/SampleMeetings.h"
#include "themes/KelpClock.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QStringList>

#include <algorithm>
#include <memory>

namespace kelp::test {

/// An overlay controller on two screens of the offscreen platform, a minute before a meeting at ten.
class OverlayFixture
{
protected:
    void setUp()
    {
        setOffscreenScreens({left, right});
        clock = std::make_unique<FakeClock>(sample::ten - 60);
        preferences = std::make_unique<Preferences>();
        opener = std::make_unique<FakeUrlOpener>();
        cover = std::make_unique<FakeScreenCover>();
        sounds = std::make_unique<RecordedSounds>(*preferences, *clock);
        controller = std::make_unique<OverlayController>(*preferences, *clock, *opener, *cover, sounds->sounds());
    }

    void tearDown()
    {
        KelpClock::override.reset();
        controller.reset();
        cover.reset();
    }

    [[nodiscard]] QWidget *window(int index = 0) const { return cover->visible().value(index); }

    [[nodiscard]] QAbstractButton *button(const QString &label) const
    {
        const auto buttons = window()->findChildren<QAbstractButton *>();
        const auto found = std::find_if(buttons.begin(), buttons.end(),
                                        [&](const QAbstractButton *each) { return each->accessibleName() == label; });
        return found == buttons.end() ? nullptr : *found;
    }

    [[nodiscard]] QStringList texts() const
    {
        QStringList result;
        for (const QLabel *label : window()->findChildren<QLabel *>())
            result.append(label->text());
        return result;
    }

    /// Whether the overlay consumed it.
    static bool press(QObject *receiver, Qt::Key key, bool isRepeat = false, quint32 code = 0)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, code, 0, 0, {}, isRepeat);
        event.ignore();
        QCoreApplication::sendEvent(receiver, &event);
        return event.isAccepted();
    }

    static void release(QObject *receiver, Qt::Key key, quint32 code)
    {
        QKeyEvent event(QEvent::KeyRelease, key, Qt::NoModifier, code, 0, 0);
        QCoreApplication::sendEvent(receiver, &event);
    }

    inline static const QRect left{0, 0, 1280, 720};
    inline static const QRect right{1280, 0, 1920, 1080};

    inline static const OverlayContent review = MeetingContent{sample::designReview(), sample::budgetPlanning()};
    inline static const OverlayContent reviewWithoutLink =
        MeetingContent{sample::withoutLink(sample::designReview()), {}};
    inline static const OverlayContent welcome = WelcomeContent{QStringLiteral("ada@example.com"), 2, {}};

    std::unique_ptr<FakeClock> clock;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<FakeUrlOpener> opener;
    std::unique_ptr<FakeScreenCover> cover;
    std::unique_ptr<RecordedSounds> sounds;
    std::unique_ptr<OverlayController> controller;
};

} // namespace kelp::test
