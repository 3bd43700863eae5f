#pragma once

#include "base/Clock.h"
#include "overlay/OverlayController.h"
#include "overlay/OverlayView.h"
#include "platform/Platform.h"
#include "platform/ScreenCover.h"
#include "preferences/Preferences.h"
#include "support/FakeUrlOpener.h"
#include "support/RecordedSounds.h"
#include "support/SampleMeetings.h"
#include "support/SampleThemes.h"

#include <QApplication>
#include <QScreen>

#include <algorithm>
#include <memory>
#include <utility>

namespace kelp::test {

/// An overlay on the real desktop that this process runs on.
class OverlayRig
{
public:
    explicit OverlayRig(std::unique_ptr<ScreenCover> by = Platform::make()->makeScreenCover()) : cover(std::move(by))
    {
        controller = std::make_unique<OverlayController>(preferences, m_clock, opener, *cover, m_sounds.sounds());
    }

    /// A meeting in a minute, on a plain dark background.
    void show()
    {
        Meeting meeting = sample::designReview();
        meeting.start = m_clock.now() + 60;
        meeting.end = meeting.start + 1800;
        controller->show(MeetingContent{meeting, {}}, sample::glowing());
    }

    /// The windows that are shown, from the left; those that fade out left aside.
    [[nodiscard]] static QList<OverlayView *> views()
    {
        QList<OverlayView *> result;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *view = qobject_cast<OverlayView *>(widget); view && view->isVisible() && view->isEnabled())
                result.append(view);
        }
        std::sort(result.begin(), result.end(), [](const QWidget *a, const QWidget *b) {
            return a->screen()->geometry().x() < b->screen()->geometry().x();
        });
        return result;
    }
    /// Whether no window is left, none that fades out either.
    [[nodiscard]] static bool areAllGone()
    {
        const QWidgetList all = QApplication::topLevelWidgets();
        return std::none_of(all.begin(), all.end(), [](QWidget *each) { return qobject_cast<OverlayView *>(each); });
    }
    /// Whether one of them has the keyboard.
    [[nodiscard]] static bool hasKeyboard() { return views().contains(QApplication::activeWindow()); }

    /// The window of the keyboard, none where that belongs to somebody else.
    [[nodiscard]] static quint32 keyboardWindow()
    {
        return hasKeyboard() ? static_cast<quint32>(QApplication::activeWindow()->winId()) : 0;
    }

private:
    SystemClock m_clock; // what follows needs it

public:
    FakeUrlOpener opener;
    Preferences preferences;

private:
    RecordedSounds m_sounds{preferences, m_clock};

public:
    std::unique_ptr<ScreenCover> cover;
    std::unique_ptr<OverlayController> controller;
};

} // namespace kelp::test
