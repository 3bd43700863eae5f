#include "overlay/OverlayController.h"

#include "overlay/OverlayFixture.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// How the user answers: by keys and buttons.
class tst_OverlayAnswers : public QObject, OverlayFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

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
};

void tst_OverlayAnswers::returnJoinsAndHides_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Enter") << Qt::Key_Enter;
}

void tst_OverlayAnswers::returnJoinsAndHides()
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

void tst_OverlayAnswers::returnWithoutALinkDoesNothing()
{
    controller->show(reviewWithoutLink);
    QVERIFY(press(window(), Qt::Key_Return));
    QVERIFY(opener->opened.isEmpty());
    QVERIFY(controller->isShown());
    QCOMPARE(cover->visible().size(), 2);
}

void tst_OverlayAnswers::returnOnTheWelcomeCardHides()
{
    controller->show(welcome);
    QVERIFY(!controller->meeting());
    press(window(), Qt::Key_Return);
    QVERIFY(!controller->isShown());
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayAnswers::escapeHides_data()
{
    QTest::addColumn<OverlayContent>("content");
    QTest::newRow("meeting") << review;
    QTest::newRow("without link") << reviewWithoutLink;
    QTest::newRow("welcome") << welcome;
}

void tst_OverlayAnswers::escapeHides()
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

void tst_OverlayAnswers::otherKeysReachTheButtons()
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

void tst_OverlayAnswers::keysOfOtherWindowsAreLeftAlone()
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

void tst_OverlayAnswers::keysAreLeftAloneOnceHidden()
{
    cover->means = ScreenCover::Fade::Picture;
    controller->show(review);
    const QPointer<QWidget> old = window();
    controller->hide(true);
    QVERIFY(old && old->isVisible());
    press(old, Qt::Key_Return);
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayAnswers::autoRepeatIsNoPress()
{
    controller->show(review);
    press(window(), Qt::Key_Return, true);
    press(window(), Qt::Key_Escape, true);
    QVERIFY(controller->isShown());
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayAnswers::aKeyHeldSinceBeforeIsNoPressUntilReleased()
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

void tst_OverlayAnswers::buttonsAnswer()
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

void tst_OverlayAnswers::snoozeWithoutAListenerHides()
{
    controller->show(review);
    QTest::mouseClick(button(u"Snooze 1 min"_s), Qt::LeftButton);
    QVERIFY(!controller->isShown());
    QCOMPARE(cover->visible().size(), 0);
}

void tst_OverlayAnswers::joinOfThePreviousMeetingLeavesTheOverlayUp()
{
    controller->show(review);
    QTest::mouseClick(button(u"Join"_s), Qt::LeftButton);
    QCOMPARE(opener->opened, QStringList{u"https://example.zoom.us/j/123456"_s});
    QVERIFY(controller->isShown());
}

QTEST_MAIN(tst_OverlayAnswers)
#include "tst_OverlayAnswers.moc"
