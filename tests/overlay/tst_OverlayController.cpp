#include "overlay/OverlayController.h"

#include "overlay/OverlayView.h"
#include "preferences/Preferences.h"
#include "support/FakeClock.h"
#include "support/FakeScreenCover.h"
#include "support/FakeUrlOpener.h"
#include "support/OffscreenScreens.h"
#include "support/SampleMeetings.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(kelp::Meeting)

class tst_OverlayController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void coversEveryScreenExactly();
    void coversOnlyThePrimaryScreenWhenAsked();
    void givesTheKeyboardToTheScreenInUse();
    void coversAScreenThatIsAdded();
    void uncoversAScreenThatIsRemovedAndHandsTheKeyboardOn();
    void followsAScreenThatIsResized();
    void movesToTheNewPrimaryScreen();

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
    void theRingRunsWithTheClock();
    void theRingDrainsBetweenTheSeconds();
    void aScreenAddedLaterCountsDownToo();
    void nothingWakesUpForACardThatStandsStill();
    void tellsWhenItIsShownAndHidden();
    void withoutScreensNothingIsShownUntilOneComes();

private:
    [[nodiscard]] QWidget *window(int index = 0) const { return cover->visible().value(index); }
    [[nodiscard]] QAbstractButton *button(const QString &label) const;
    [[nodiscard]] QStringList texts() const;
    static bool press(QObject *receiver, Qt::Key key, bool isRepeat = false, quint32 code = 0);
    static void release(QObject *receiver, Qt::Key key, quint32 code);

    std::unique_ptr<FakeClock> clock;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<FakeUrlOpener> opener;
    std::unique_ptr<FakeScreenCover> cover;
    std::unique_ptr<OverlayController> controller;
};

namespace {

const QRect left(0, 0, 1280, 720);
const QRect right(1280, 0, 1920, 1080);

const OverlayContent review = MeetingContent{sample::designReview(), sample::budgetPlanning()};
const OverlayContent reviewWithoutLink = MeetingContent{sample::withoutLink(sample::designReview()), {}};
const OverlayContent welcome = WelcomeContent{u"ada@example.com"_s, 2, {}};

} // namespace

void tst_OverlayController::init()
{
    setOffscreenScreens({left, right});
    clock = std::make_unique<FakeClock>(sample::ten - 60);
    preferences = std::make_unique<Preferences>();
    opener = std::make_unique<FakeUrlOpener>();
    cover = std::make_unique<FakeScreenCover>();
    controller = std::make_unique<OverlayController>(*preferences, *clock, *opener, *cover);
}

void tst_OverlayController::cleanup()
{
    controller.reset();
    cover.reset();
}

QAbstractButton *tst_OverlayController::button(const QString &label) const
{
    const auto buttons = window()->findChildren<QAbstractButton *>();
    const auto found = std::find_if(buttons.begin(), buttons.end(),
                                    [&](const QAbstractButton *each) { return each->accessibleName() == label; });
    return found == buttons.end() ? nullptr : *found;
}

QStringList tst_OverlayController::texts() const
{
    QStringList result;
    for (const QLabel *label : window()->findChildren<QLabel *>())
        result.append(label->text());
    return result;
}

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
    QVERIFY(!lost); // at once, before Qt moves it to another screen
    QCOMPARE(cover->visible().size(), 1);
    QCOMPARE(window()->geometry(), left);
    QCOMPARE(cover->keyboard, window());
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
    QTRY_COMPARE(cover->visible().size(), 1);
    QCOMPARE(window()->geometry(), right);
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

QTEST_MAIN(tst_OverlayController)
#include "tst_OverlayController.moc"
