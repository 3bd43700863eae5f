#include "overlay/OverlayController.h"

#include "overlay/OverlayFixture.h"
#include "themes/ThemeImages.h"

#include <QApplication>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <qpa/qwindowsysteminterface.h>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(kelp::Meeting)

class tst_OverlayController : public QObject, OverlayFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void coversEveryScreenExactly();
    void coversOnlyThePrimaryScreenWhenAsked();
    void anUnknownChoiceOfScreensMeansAll();
    void givesTheKeyboardToTheScreenInUse();
    void coversAScreenThatIsAdded();
    void uncoversAScreenThatIsRemovedAndHandsTheKeyboardOn();
    void aWindowOutlivesTheNewsThatItsScreenGoes();
    void followsAScreenThatIsResized();
    void movesToTheNewPrimaryScreen();
    void aScreenAddedLaterIsCoveredWithoutFading();
    void aWindowThatTheDesktopClosesComesBack();
    void aDesktopThatClosesEveryWindowHasItsWay();
    void closingAWindowDismisses_data();
    void closingAWindowDismisses();
    void theKeyboardIsGivenBackAfterItsScreenIsGone();

    void returnJoinsAndHides_data();
    void returnJoinsAndHides();
    void returnWithoutALinkDoesNothing();
    void returnOnTheWelcomeCardHides();
    void escapeHides_data();
    void escapeHides();
    void otherKeysReachTheButtons();
    void keysOfOtherWindowsAreLeftAlone();
    void keysAreLeftAloneOnceHidden();
    void autoRepeatIsNoPress();
    void aKeyHeldSinceBeforeIsNoPressUntilReleased();

    void buttonsAnswer();
    void snoozeWithoutAListenerHides();
    void joinOfThePreviousMeetingLeavesTheOverlayUp();

    void theWelcomeCardTimesOut();
    void theTimeOutOfTheWelcomeCardLeavesALaterOverlayUp();
    void theTimeOutOfAWelcomeCardLeavesALaterWelcomeCardUp();
    void aNewShowingReplacesTheOldAtOnce();
    void hidingFadesOutWithoutAnsweringAnyMore();
    void showsWhileTheOldOneFadesOut();
    void theCountdownRunsWithTheClock();
    void theCountdownFollowsAJumpOfTheClock();
    void anotherTimeCanBeShown();
    void theRingRunsWithTheClock();
    void theRingDrainsBetweenTheSeconds();
    void aScreenAddedLaterCountsDownToo();
    void nothingWakesUpForACardThatStandsStill();
    void tellsWhenItIsShownAndHidden();
    void aMeetingIsHeardOnceItIsSeen();
    void aMeetingIsHeardThoughNothingIsPainted();
    void aMeetingIsHeardWithoutScreens();
    void aMeetingThatIsGoneBeforeItIsSeenIsNotHeard();
    void theWelcomeCardIsSilent();
    void hidingStopsTheSound();
    void aNewShowingStopsWhatPlays();
    void withoutScreensNothingIsShownUntilOneComes();

    void eachWindowBlursWhatLiesBehindIt();
    void doesNotWaitForAPicture();
    void aPreparedShowingHasItsPictureAtOnce();
    void whatIsPreparedInVainIsForgotten();
    void nothingIsDecodedAnyMoreOnceHidden();

private:
    static bool press(QObject *receiver, Qt::Key key, bool isRepeat = false, quint32 code = 0);
    static void release(QObject *receiver, Qt::Key key, quint32 code);
};

namespace {

const OverlayContent review = MeetingContent{sample::designReview(), sample::budgetPlanning()};
const OverlayContent reviewWithoutLink = MeetingContent{sample::withoutLink(sample::designReview()), {}};
const OverlayContent welcome = WelcomeContent{u"ada@example.com"_s, 2, {}};

} // namespace

/// Whether the overlay consumed it.
bool tst_OverlayController::press(QObject *receiver, Qt::Key key, bool isRepeat, quint32 code)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, code, 0, 0, {}, isRepeat);
    event.ignore();
    QCoreApplication::sendEvent(receiver, &event);
    return event.isAccepted();
}

void tst_OverlayController::release(QObject *receiver, Qt::Key key, quint32 code)
{
    QKeyEvent event(QEvent::KeyRelease, key, Qt::NoModifier, code, 0, 0);
    QCoreApplication::sendEvent(receiver, &event);
}

void tst_OverlayController::coversEveryScreenExactly()
{
    QVERIFY(!controller->isShown());
    controller->show(review);
    QVERIFY(controller->isShown());
    QCOMPARE(controller->meeting(), sample::designReview());
    QCOMPARE(cover->visible().size(), 2);
    QCOMPARE(window(0)->geometry(), left);
    QCOMPARE(window(1)->geometry(), right);
    QCOMPARE(cover->keyboard, window(0));
}

void tst_OverlayController::coversOnlyThePrimaryScreenWhenAsked()
{
    preferences->set(preference::displays, u"primary"_s);
    controller->show(review);
    QCOMPARE(cover->visible().size(), 1);
    QCOMPARE(window()->geometry(), QGuiApplication::screens().constFirst()->geometry());
}

void tst_OverlayController::anUnknownChoiceOfScreensMeansAll()
{
    preferences->set(preference::displays, u"Primary"_s);
    controller->show(review);
    QCOMPARE(cover->visible().size(), 2);
}

void tst_OverlayController::givesTheKeyboardToTheScreenInUse()
{
    cover->current = QGuiApplication::screens().at(1);
    controller->show(review);
    QCOMPARE(cover->keyboard, window(1));
}

void tst_OverlayController::coversAScreenThatIsAdded()
{
    controller->show(review);
    const QRect below(0, 1080, 800, 600);
    setOffscreenScreens({left, right, below});
    QTRY_COMPARE(cover->visible().size(), 3);
    QCOMPARE(window(2)->geometry(), below);
    QVERIFY(cover->keyboard);
}

void tst_OverlayController::uncoversAScreenThatIsRemovedAndHandsTheKeyboardOn()
{
    cover->current = QGuiApplication::screens().at(1);
    controller->show(review);
    const QPointer<QWidget> lost = window(1);
    cover->current = nullptr;
    setOffscreenScreens({left});
    QTRY_VERIFY(!lost);
    QCOMPARE(cover->visible().size(), 1);
    QCOMPARE(window()->geometry(), left);
    QCOMPARE(cover->keyboard, window());
    QVERIFY(controller->isShown());
}

/// Under Wayland Qt may hear of it in the middle of the window's painting, which would go on without a window.
void tst_OverlayController::aWindowOutlivesTheNewsThatItsScreenGoes()
{
    controller->show(review);
    const QPointer<QWidget> lost = window(1);
    bool wasThere = false;
    QObject context;
    connect(qGuiApp, &QGuiApplication::screenRemoved, &context, [&] { wasThere = lost && lost->isVisible(); });
    setOffscreenScreens({left});
    QVERIFY(wasThere);
    QTRY_VERIFY(!lost);
    QVERIFY(controller->isShown());
}

void tst_OverlayController::followsAScreenThatIsResized()
{
    controller->show(review);
    const QRect larger(0, 0, 1600, 900);
    setOffscreenScreens({larger, right});
    QTRY_COMPARE(window()->geometry(), larger);
    QVERIFY(window()->rect().contains(button(u"Dismiss"_s)->geometry()));
    QVERIFY(std::abs(button(u"Snooze 1 min"_s)->geometry().center().x() - 800) < 200);
}

void tst_OverlayController::movesToTheNewPrimaryScreen()
{
    preferences->set(preference::displays, u"primary"_s);
    controller->show(review);
    setOffscreenScreens({});
    setOffscreenScreens({right});
    QTRY_VERIFY(window() && window()->geometry() == right);
    QCOMPARE(cover->visible().size(), 1);
}

void tst_OverlayController::aScreenAddedLaterIsCoveredWithoutFading()
{
    cover->means = ScreenCover::Fade::WindowOpacity;
    controller->show(review);
    QCOMPARE(window(0)->windowOpacity(), 0.0);
    setOffscreenScreens({left, right, QRect(0, 1080, 800, 600)});
    QTRY_COMPARE(cover->visible().size(), 3);
    QCOMPARE(window(2)->windowOpacity(), 1.0);
    controller->hide(true);
    QTRY_VERIFY(cover->visible().isEmpty());
}

void tst_OverlayController::aWindowThatTheDesktopClosesComesBack()
{
    controller->show(review);
    const QPointer<QWidget> closed = window(0);
    Q_EMIT cover->closed(closed);
    QTRY_VERIFY(!closed);
    QCOMPARE(cover->visible().size(), 1);
    QCOMPARE(cover->keyboard, window(0)); // that of the other screen
    clock->advance(0.2);
    QCOMPARE(cover->visible().size(), 2);
    QVERIFY(controller->isShown());
}

void tst_OverlayController::aDesktopThatClosesEveryWindowHasItsWay()
{
    setOffscreenScreens({left});
    controller->show(review);
    QSignalSpy hidden(controller.get(), &OverlayController::hidden);
    int closings = 0;
    for (; controller->meeting() && closings < 100; ++closings) {
        const QPointer<QWidget> closed = window(0);
        Q_EMIT cover->closed(closed);
        QTRY_VERIFY(!closed);
        clock->advance(0.2);
    }
    QCOMPARE(closings, 6);
    QCOMPARE(hidden.size(), 1);
}

void tst_OverlayController::closingAWindowDismisses_data()
{
    QTest::addColumn<bool>("fromOutside");
    QTest::newRow("as under X11") << true;
    QTest::newRow("as under Wayland") << false;
}

void tst_OverlayController::closingAWindowDismisses()
{
    QFETCH(bool, fromOutside);
    controller->show(review);
    QCOMPARE(cover->visible().size(), 2);
    if (fromOutside)
        QWindowSystemInterface::handleCloseEvent(window(0)->windowHandle());
    else
        window(0)->windowHandle()->close();
    QTRY_VERIFY(!controller->isShown());
    QTRY_COMPARE(cover->visible().size(), 0);
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayController::theKeyboardIsGivenBackAfterItsScreenIsGone()
{
    cover->current = QGuiApplication::screens().at(1);
    controller->show(review);
    cover->current = nullptr;
    setOffscreenScreens({left});
    controller->hide(false);
    QVERIFY(!cover->keyboard);
    QTRY_COMPARE(cover->visible().size(), 0);
}

void tst_OverlayController::returnJoinsAndHides_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Enter") << Qt::Key_Enter;
}

void tst_OverlayController::returnJoinsAndHides()
{
    QFETCH(Qt::Key, key);
    controller->show(review);
    // Whichever button has the focus, the key means the same.
    button(u"Dismiss"_s)->setFocus();
    QVERIFY(press(button(u"Dismiss"_s), key));
    QCOMPARE(opener->opened, QStringList{u"https://meet.google.com/abc-defg-hij"_s});
    QVERIFY(!controller->isShown());
    QVERIFY(!controller->meeting());
    QVERIFY(!cover->keyboard);
}

void tst_OverlayController::returnWithoutALinkDoesNothing()
{
    controller->show(reviewWithoutLink);
    QVERIFY(press(window(), Qt::Key_Return));
    QVERIFY(opener->opened.isEmpty());
    QVERIFY(controller->isShown());
    QCOMPARE(cover->visible().size(), 2);
}

void tst_OverlayController::returnOnTheWelcomeCardHides()
{
    controller->show(welcome);
    QVERIFY(!controller->meeting());
    press(window(), Qt::Key_Return);
    QVERIFY(!controller->isShown());
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayController::escapeHides_data()
{
    QTest::addColumn<OverlayContent>("content");
    QTest::newRow("meeting") << review;
    QTest::newRow("without link") << reviewWithoutLink;
    QTest::newRow("welcome") << welcome;
}

void tst_OverlayController::escapeHides()
{
    QFETCH(OverlayContent, content);
    controller->show(content);
    QSignalSpy snoozed(controller.get(), &OverlayController::snoozed);
    press(window(1), Qt::Key_Escape);
    QVERIFY(!controller->isShown());
    QCOMPARE(cover->visible().size(), 0);
    QCOMPARE(snoozed.size(), 0);
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayController::otherKeysReachTheButtons()
{
    controller->show(review);
    QSignalSpy snoozed(controller.get(), &OverlayController::snoozed);
    QTest::keyClick(window(), Qt::Key_Tab);
    QCOMPARE(window()->focusWidget(), button(u"Join Google Meet"_s));
    QTest::keyClick(window()->focusWidget(), Qt::Key_Tab);
    QCOMPARE(window()->focusWidget(), button(u"Snooze 1 min"_s));
    QTest::keyClick(window()->focusWidget(), Qt::Key_Space);
    QCOMPARE(snoozed.size(), 1);
    QVERIFY(!controller->isShown());
}

void tst_OverlayController::keysOfOtherWindowsAreLeftAlone()
{
    QPushButton other;
    other.setAutoDefault(true);
    other.show();
    controller->show(review);
    press(&other, Qt::Key_Escape);
    press(&other, Qt::Key_Return);
    QVERIFY(controller->isShown());
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayController::keysAreLeftAloneOnceHidden()
{
    cover->means = ScreenCover::Fade::Picture;
    controller->show(review);
    const QPointer<QWidget> old = window();
    controller->hide(true);
    QVERIFY(old && old->isVisible());
    press(old, Qt::Key_Return);
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayController::autoRepeatIsNoPress()
{
    controller->show(review);
    press(window(), Qt::Key_Return, true);
    press(window(), Qt::Key_Escape, true);
    QVERIFY(controller->isShown());
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayController::aKeyHeldSinceBeforeIsNoPressUntilReleased()
{
    constexpr quint32 returnCode = 36;
    cover->held = {returnCode};
    controller->show(review);
    press(window(), Qt::Key_Return, false, returnCode);
    QVERIFY(controller->isShown());
    release(window(), Qt::Key_Return, returnCode);
    press(window(), Qt::Key_Return, false, returnCode);
    QVERIFY(!controller->isShown());
    QCOMPARE(opener->opened.size(), 1);
}

void tst_OverlayController::buttonsAnswer()
{
    QSignalSpy snoozed(controller.get(), &OverlayController::snoozed);
    controller->show(review);
    QTest::mouseClick(button(u"Dismiss"_s), Qt::LeftButton);
    QVERIFY(!controller->isShown());
    QCOMPARE(snoozed.size(), 0);

    controller->show(review);
    QTest::mouseClick(button(u"Snooze 1 min"_s), Qt::LeftButton);
    QVERIFY(!controller->isShown());
    QCOMPARE(snoozed.size(), 1);
    QCOMPARE(snoozed.at(0).at(0).value<Meeting>(), sample::designReview());
    QVERIFY(opener->opened.isEmpty());

    controller->show(review);
    QTest::mouseClick(button(u"Join Google Meet"_s), Qt::LeftButton);
    QVERIFY(!controller->isShown());
    QCOMPARE(opener->opened.size(), 1);

    controller->show(reviewWithoutLink);
    QVERIFY(!button(u"Join Google Meet"_s));

    controller->show(welcome);
    QTest::mouseClick(button(u"Got it"_s), Qt::LeftButton);
    QVERIFY(!controller->isShown());
    QCOMPARE(snoozed.size(), 1);
}

void tst_OverlayController::snoozeWithoutAListenerHides()
{
    controller->show(review);
    QTest::mouseClick(button(u"Snooze 1 min"_s), Qt::LeftButton);
    QVERIFY(!controller->isShown());
    QCOMPARE(cover->visible().size(), 0);
}

void tst_OverlayController::joinOfThePreviousMeetingLeavesTheOverlayUp()
{
    controller->show(review);
    QTest::mouseClick(button(u"Join"_s), Qt::LeftButton);
    QCOMPARE(opener->opened, QStringList{u"https://example.zoom.us/j/123456"_s});
    QVERIFY(controller->isShown());
}

void tst_OverlayController::theWelcomeCardTimesOut()
{
    controller->show(welcome);
    clock->advance(7.9);
    QVERIFY(controller->isShown());
    clock->advance(0.2);
    QVERIFY(!controller->isShown());
}

void tst_OverlayController::theTimeOutOfTheWelcomeCardLeavesALaterOverlayUp()
{
    controller->show(welcome);
    clock->advance(5);
    controller->show(review);
    clock->advance(3600);
    QVERIFY(controller->isShown());
    QCOMPARE(controller->meeting(), sample::designReview());
}

void tst_OverlayController::theTimeOutOfAWelcomeCardLeavesALaterWelcomeCardUp()
{
    controller->show(welcome);
    clock->advance(5);
    controller->show(welcome);
    clock->advance(7);
    QVERIFY(controller->isShown());
    clock->advance(1);
    QVERIFY(!controller->isShown());
}

void tst_OverlayController::aNewShowingReplacesTheOldAtOnce()
{
    cover->means = ScreenCover::Fade::Picture;
    controller->show(review);
    const QPointer<QWidget> old = window();
    controller->show(reviewWithoutLink);
    QVERIFY(!old || !old->isVisible());
    QCOMPARE(cover->visible().size(), 2);
    QCOMPARE(controller->meeting(), sample::withoutLink(sample::designReview()));
    QTRY_VERIFY(!old);
}

void tst_OverlayController::hidingFadesOutWithoutAnsweringAnyMore()
{
    cover->means = ScreenCover::Fade::Picture;
    QSignalSpy snoozed(controller.get(), &OverlayController::snoozed);
    controller->show(review);
    const QPointer<QWidget> old = window();
    QAbstractButton *snooze = button(u"Snooze 1 min"_s);
    controller->hide(true);
    QVERIFY(!controller->isShown());
    QVERIFY(!controller->meeting());
    QVERIFY(old && old->isVisible());
    controller->show(reviewWithoutLink); // the old buttons must not answer for the new meeting
    snooze->click();
    QCOMPARE(snoozed.size(), 0);
    QVERIFY(controller->isShown());
    QTRY_VERIFY(!old);
}

void tst_OverlayController::showsWhileTheOldOneFadesOut()
{
    cover->means = ScreenCover::Fade::Picture;
    controller->show(review);
    controller->hide(true);
    controller->show(reviewWithoutLink);
    QCOMPARE(cover->visible().size(), 4);
    QTRY_COMPARE(cover->visible().size(), 2);
    QVERIFY(controller->isShown());
}

void tst_OverlayController::theCountdownRunsWithTheClock()
{
    controller->show(review);
    QCOMPARE(texts().constFirst(), u"Starts in 1:00"_s);
    clock->advance(0.6);
    QCOMPARE(texts().constFirst(), u"Starts in 0:59"_s);
    for (int second = 58; second > 0; --second) {
        clock->advance(1);
        QCOMPARE(texts().constFirst(), u"Starts in 0:%1"_s.arg(second, 2, 10, QLatin1Char('0')));
    }
    clock->advance(1);
    QCOMPARE(texts().constFirst(), u"Starting now"_s);
    clock->advance(5);
    QCOMPARE(texts().constFirst(), u"Started 0:05 ago"_s);
}

void tst_OverlayController::theCountdownFollowsAJumpOfTheClock()
{
    controller->show(review);
    clock->jump(sample::ten + 600);
    clock->advance(1.1);
    QCOMPARE(texts().constFirst(), u"Started 10:01 ago"_s);
}

void tst_OverlayController::anotherTimeCanBeShown()
{
    KelpClock::override = sample::ten - 120;
    controller->show(review);
    QCOMPARE(texts().constFirst(), u"Starts in 2:00"_s);
    clock->advance(5);
    QCOMPARE(texts().constFirst(), u"Starts in 2:00"_s);
    KelpClock::override = sample::ten + 90;
    clock->advance(1.1);
    QCOMPARE(texts().constFirst(), u"Started 1:30 ago"_s);
    KelpClock::override.reset();
    clock->advance(1.1);
    QCOMPARE(texts().constFirst(), u"Starts in 0:53"_s);
}

void tst_OverlayController::theRingRunsWithTheClock()
{
    preferences->set(preference::countdownStyle, u"ring"_s);
    controller->show(review);
    QCOMPARE(texts().constFirst(), u"1:00 until start"_s);
    clock->advance(0.6);
    QCOMPARE(texts().constFirst(), u"0:59 until start"_s);
    clock->advance(59);
    QCOMPARE(texts().constFirst(), u"0:00 until start"_s);
    clock->advance(0.5);
    QCOMPARE(texts().constFirst(), u"now starting"_s);
    clock->advance(4);
    QCOMPARE(texts().constFirst(), u"now starting"_s);
    clock->advance(1);
    QCOMPARE(texts().constFirst(), u"+0:05 since start"_s);
}

void tst_OverlayController::theRingDrainsBetweenTheSeconds()
{
    preferences->set(preference::countdownStyle, u"ring"_s);
    controller->show(review);
    clock->advance(10.1);
    const int before = clock->wakeUps();
    clock->advance(1);
    QVERIFY2(clock->wakeUps() - before >= 19 && clock->wakeUps() - before <= 21,
             qPrintable(QString::number(clock->wakeUps() - before)));
    clock->advance(49);
    const int after = clock->wakeUps();
    clock->advance(4);
    QVERIFY(clock->wakeUps() - after <= 5); // empty: nothing moves
}

void tst_OverlayController::aScreenAddedLaterCountsDownToo()
{
    setOffscreenScreens({});
    controller->show(review);
    QVERIFY(!controller->isShown());
    setOffscreenScreens({left});
    QTRY_COMPARE(cover->visible().size(), 1);
    QCOMPARE(texts().constFirst(), u"Starts in 1:00"_s);
    clock->advance(2);
    QCOMPARE(texts().constFirst(), u"Starts in 0:58"_s);
}

void tst_OverlayController::nothingWakesUpForACardThatStandsStill()
{
    controller->show(welcome);
    clock->advance(7.9);
    QCOMPARE(clock->wakeUps(), 0);
}

void tst_OverlayController::tellsWhenItIsShownAndHidden()
{
    QSignalSpy shown(controller.get(), &OverlayController::shown);
    QSignalSpy hidden(controller.get(), &OverlayController::hidden);
    controller->hide(true);
    QCOMPARE(hidden.size(), 0);
    controller->show(review);
    QCOMPARE(shown.size(), 1);
    controller->show(welcome);
    QCOMPARE(shown.size(), 2);
    QCOMPARE(hidden.size(), 1);
    controller->hide(true);
    controller->hide(false);
    QCOMPARE(hidden.size(), 2);
}

void tst_OverlayController::aMeetingIsHeardOnceItIsSeen()
{
    controller->show(review);
    QCOMPARE(sounds->player.plays.size(), 0);
    for (QWidget *each : cover->visible())
        QTRY_VERIFY(qobject_cast<OverlayView *>(each)->isSeen());
    QCOMPARE(sounds->player.plays.size(), 0); // what is painted is on its way to the screen
    clock->advance(0);
    QCOMPARE(sounds->player.plays.size(), 1);
    QCOMPARE(sounds->player.plays.first().sound.name, u"Glass"_s);
    clock->advance(10);
    QCOMPARE(sounds->player.plays.size(), 1);
}

void tst_OverlayController::aMeetingIsHeardThoughNothingIsPainted()
{
    controller->show(review);
    clock->advance(0.24);
    QCOMPARE(sounds->player.plays.size(), 0);
    clock->advance(0.01);
    QCOMPARE(sounds->player.plays.size(), 1);
}

void tst_OverlayController::aMeetingIsHeardWithoutScreens()
{
    setOffscreenScreens({});
    controller->show(review);
    clock->advance(0);
    QCOMPARE(sounds->player.plays.size(), 1);
    QVERIFY(sounds->player.isPlaying);
    controller->hide(true);
    QVERIFY(!sounds->player.isPlaying);
}

void tst_OverlayController::aMeetingThatIsGoneBeforeItIsSeenIsNotHeard()
{
    controller->show(review);
    controller->hide(true);
    clock->advance(10);
    QCOMPARE(sounds->player.plays.size(), 0);
}

void tst_OverlayController::theWelcomeCardIsSilent()
{
    preferences->set(preference::pauseMusic, true);
    controller->show(welcome);
    clock->advance(5);
    QCOMPARE(sounds->player.plays.size(), 0);
    QCOMPARE(sounds->players.log, QStringList());
}

void tst_OverlayController::hidingStopsTheSound()
{
    controller->show(review);
    clock->advance(1);
    QVERIFY(sounds->player.isPlaying);
    press(window(), Qt::Key_Escape);
    QVERIFY(!sounds->player.isPlaying);
}

/// A sound that the user is just trying out falls silent, too.
void tst_OverlayController::aNewShowingStopsWhatPlays()
{
    sounds->sounds().play(u"Bells"_s);
    controller->show(welcome);
    QVERIFY(!sounds->player.isPlaying);
}

void tst_OverlayController::withoutScreensNothingIsShownUntilOneComes()
{
    setOffscreenScreens({});
    controller->show(review);
    QVERIFY(!controller->isShown());
    QCOMPARE(controller->meeting(), sample::designReview());
    setOffscreenScreens({left});
    QTRY_COMPARE(cover->visible().size(), 1);
    QCOMPARE(cover->keyboard, window());
    controller->hide(false);
    QVERIFY(!controller->meeting());
}

void tst_OverlayController::eachWindowBlursWhatLiesBehindIt()
{
    cover->behind = [](const QScreen &screen) { return screen.geometry() == left ? Qt::white : Qt::black; };
    controller->show(review);
    const QList<QWidget *> windows = cover->visible();
    QCOMPARE(windows.size(), 2);
    const auto corner = [](QWidget *window) { return window->grab(QRect(0, 0, 1, 1)).toImage().pixelColor(0, 0); };
    QVERIFY(std::abs(corner(windows.at(0)).green() - 255 * 0.45) <= 2);
    QCOMPARE(corner(windows.at(1)), QColor(Qt::black));
}

void tst_OverlayController::doesNotWaitForAPicture()
{
    ThemeImages::forgetDecoded();
    preferences->set(preference::theme, u"zen"_s);
    controller->show(review);
    QWidget *window = cover->visible().at(0);
    const auto colour = [&] { return window->grab(QRect(640, 80, 1, 1)).toImage().pixelColor(0, 0); };
    const QColor before = colour();
    QTRY_VERIFY(ThemeImages::isReady(OverlayTheme::named(u"zen"_s), *preferences));
    QTRY_VERIFY(colour().lightness() > before.lightness() + 20); // the sky; fog over black before
}

void tst_OverlayController::aPreparedShowingHasItsPictureAtOnce()
{
    ThemeImages::forgetDecoded();
    preferences->set(preference::theme, u"zen"_s);
    const OverlayTheme zen = OverlayTheme::named(u"zen"_s);
    controller->prepare(review);
    QVERIFY(!controller->isShown());
    QTRY_VERIFY(ThemeImages::isReady(zen, *preferences));
    clock->advance(12);
    controller->show(review);
    const QImage first = cover->visible().at(0)->grab(QRect(640, 80, 1, 1)).toImage();
    QCoreApplication::processEvents();
    QCOMPARE(cover->visible().at(0)->grab(QRect(640, 80, 1, 1)).toImage(), first);
    const QColor colour = first.pixelColor(0, 0);
    QVERIFY2(colour.lightness() > 30, qPrintable(colour.name()));
}

void tst_OverlayController::whatIsPreparedInVainIsForgotten()
{
    ThemeImages::forgetDecoded();
    preferences->set(preference::theme, u"space"_s);
    const OverlayTheme space = OverlayTheme::named(u"space"_s);
    controller->prepare(review);
    QTRY_VERIFY(ThemeImages::isReady(space, *preferences));
    clock->advance(29);
    controller->prepare(review); // asked for again and again meanwhile
    QVERIFY(ThemeImages::isReady(space, *preferences));
    clock->advance(2);
    QVERIFY(!ThemeImages::isReady(space, *preferences));
    // A showing keeps its picture for as long as it lasts.
    controller->prepare(review);
    QTRY_VERIFY(ThemeImages::isReady(space, *preferences));
    controller->show(review);
    clock->advance(31);
    QVERIFY(ThemeImages::isReady(space, *preferences));
    controller->hide(false);
    QVERIFY(!ThemeImages::isReady(space, *preferences));
}

void tst_OverlayController::nothingIsDecodedAnyMoreOnceHidden()
{
    const OverlayTheme lofi = OverlayTheme::named(u"lofi"_s);
    preferences->set(preference::theme, lofi.id);
    cover->means = ScreenCover::Fade::WindowOpacity;
    controller->prepare(review);
    QTRY_VERIFY(ThemeImages::isReady(lofi, *preferences));
    controller->show(review);
    QVERIFY(!cover->visible().at(0)->grab().isNull());
    controller->hide(true);
    QVERIFY(!cover->visible().isEmpty()); // fading out, with new frames
    clock->advance(0.1);
    QVERIFY(!cover->visible().at(0)->grab().isNull());
    QVERIFY(!ThemeImages::isReady(lofi, *preferences));
    QTRY_VERIFY(cover->visible().isEmpty());
}

QTEST_MAIN(tst_OverlayController)
#include "tst_OverlayController.moc"
