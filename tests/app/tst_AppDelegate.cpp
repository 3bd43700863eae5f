#include "app/DelegateFixture.h"
#include "settings/AppearanceView.h"
#include "settings/SettingsView.h"

#include <QApplication>
#include <QJsonArray>
#include <QScreen>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// The launch, the item in the tray and the panel.
class tst_AppDelegate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { kelp = std::make_unique<DelegateFixture>(); }
    void cleanup() { kelp.reset(); }

    void anOldSwitchOfTheSoundBecomesAChoice_data();
    void anOldSwitchOfTheSoundBecomesAChoice();
    void opensThePanelInTheMiddleWithoutAccounts();
    void leavesThePanelClosedWithAnAccount();
    void twoSlashesTakeThePanelToTheMiddleAndAway();
    void aPanelBehindOthersComesForwardWhereItIs();
    void theTitleFollowsTheClock();
    void showsTheIconAgainAtTheTickThatEndsAPause();
    void previewsATestMeeting_data();
    void previewsATestMeeting();

private:
    [[nodiscard]] bool isInTheMiddle() const;

    std::unique_ptr<DelegateFixture> kelp;
};

bool tst_AppDelegate::isInTheMiddle() const
{
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    // The frame around it is the desktop's affair.
    return QRect(kelp->panel().pos(), kelp->panel().size()).center() == available.center();
}

void tst_AppDelegate::anOldSwitchOfTheSoundBecomesAChoice_data()
{
    QTest::addColumn<QJsonObject>("stored");
    QTest::addColumn<QJsonValue>("sound");
    const QJsonValue unset(QJsonValue::Undefined);
    QTest::newRow("nothing") << QJsonObject() << unset;
    QTest::newRow("off") << QJsonObject{{u"playSound"_s, false}} << QJsonValue(u"None"_s);
    QTest::newRow("on") << QJsonObject{{u"playSound"_s, true}} << unset;
    QTest::newRow("a number") << QJsonObject{{u"playSound"_s, 0}} << unset;
    QTest::newRow("a text") << QJsonObject{{u"playSound"_s, u"false"_s}} << unset;
    QTest::newRow("off, but there is a choice")
        << QJsonObject{{u"playSound"_s, false}, {u"sound"_s, u"Ping"_s}} << QJsonValue(u"Ping"_s);
}

void tst_AppDelegate::anOldSwitchOfTheSoundBecomesAChoice()
{
    QFETCH(QJsonObject, stored);
    QFETCH(QJsonValue, sound);
    QVERIFY(kelp->writePreferences(stored));
    QVERIFY(kelp->launch());
    QCOMPARE(kelp->preferences().value(u"sound"_s), sound);
    QCOMPARE(kelp->preferences().value(u"playSound"_s), stored.value(u"playSound"_s));
}

void tst_AppDelegate::opensThePanelInTheMiddleWithoutAccounts()
{
    QVERIFY(kelp->launch());
    QVERIFY(!kelp->isPanelVisible()); // once all is set up
    kelp->clock.advance(0);
    QVERIFY(kelp->platform.activator->isActive(kelp->panel()));
    QCOMPARE(kelp->panel().windowTitle(), u"Kelp"_s);
    QVERIFY(isInTheMiddle());
}

void tst_AppDelegate::leavesThePanelClosedWithAnAccount()
{
    QVERIFY(kelp->signIn());
    QVERIFY(kelp->startSandbox({}));
    QVERIFY(kelp->launch());
    kelp->clock.advance(60);
    QVERIFY(!kelp->findPanel()); // nor does its memory have to be paid for
    kelp->pressSlashes();
    QVERIFY(kelp->platform.activator->isActive(kelp->panel()));
    QVERIFY(isInTheMiddle());
}

void tst_AppDelegate::twoSlashesTakeThePanelToTheMiddleAndAway()
{
    QVERIFY(kelp->launch());
    kelp->clock.advance(0);
    for (int round = 0; round < 2; ++round) {
        kelp->panel().move(1, 2);
        QVERIFY(!isInTheMiddle());
        kelp->pressSlashes();
        QVERIFY(!kelp->isPanelVisible());
        kelp->pressSlashes();
        QVERIFY(kelp->platform.activator->isActive(kelp->panel()));
        QVERIFY(isInTheMiddle());
    }
}

void tst_AppDelegate::aPanelBehindOthersComesForwardWhereItIs()
{
    QVERIFY(kelp->launch());
    kelp->clock.advance(0);
    kelp->panel().move(1, 2);
    kelp->platform.activator->active = nullptr;
    kelp->delegate->toggleMainWindow();
    QVERIFY(kelp->platform.activator->isActive(kelp->panel()));
    QCOMPARE(kelp->panel().pos(), QPoint(1, 2));
}

void tst_AppDelegate::theTitleFollowsTheClock()
{
    QVERIFY(kelp->signIn());
    QVERIFY(kelp->startSandbox({meetingIn(310, u"Design review"_s)}));
    QVERIFY(kelp->launch());
    const auto title = [this] { return kelp->platform.item->looks.last().title; };
    QCOMPARE(title(), u" 5m"_s);
    const qsizetype asked = kelp->sandbox.requests().size();
    kelp->clock.advance(15); // a tick comes every 5 s
    QCOMPARE(title(), u" 4m"_s);
    QCOMPARE(kelp->sandbox.requests().size(), asked);
}

void tst_AppDelegate::showsTheIconAgainAtTheTickThatEndsAPause()
{
    const QJsonObject date{{u"date"_s, u"2026-01-01T09:00:06Z"_s}};
    QVERIFY(kelp->signIn({{u"pausedUntil"_s, date}}));
    QVERIFY(kelp->startSandbox({meetingIn(310, u"Design review"_s)}));
    QVERIFY(kelp->launch());
    const auto look = [this] { return kelp->platform.item->looks.last(); };
    kelp->clock.advance(5); // a tick comes every 5 s
    QCOMPARE(look().description, u"Kelp paused"_s);
    QCOMPARE(look().title, QString());
    kelp->clock.advance(5);
    QCOMPARE(look().description, u"Kelp"_s);
    QCOMPARE(look().title, u" 5m"_s);
}

void tst_AppDelegate::previewsATestMeeting_data()
{
    QTest::addColumn<int>("lead"); // minutes
    QTest::addColumn<QString>("time");
    QTest::newRow("when it starts") << 0 << u"09:01 – 09:31"_s;
    QTest::newRow("nonsense") << -3 << u"09:01 – 09:31"_s;
    QTest::newRow("5 minutes before") << 5 << u"09:05 – 09:35"_s;
}

void tst_AppDelegate::previewsATestMeeting()
{
    QFETCH(int, lead);
    QFETCH(QString, time);
    QVERIFY(kelp->writePreferences({{u"leadMinutes"_s, lead}, {u"sound"_s, u"None"_s}}));
    QVERIFY(kelp->launch());
    kelp->clock.advance(0);
    kelp->panel().onAppearance();
    QVERIFY(!kelp->isPanelVisible());
    AppearanceView *appearance = nullptr;
    for (QWidget *each : QApplication::topLevelWidgets())
        appearance = appearance ? appearance : qobject_cast<AppearanceView *>(each);
    QVERIFY(appearance);
    appearance->onPreview();
    QVERIFY(kelp->reads(u"Test meeting"_s));
    QVERIFY2(kelp->reads(time + u"  ·  4 people  ·  Kelp"_s), qPrintable(kelp->texts().join(u'\n')));
    kelp->press(u"Join Google Meet"_s);
    QCOMPARE(kelp->platform.opener->opened, QStringList{u"https://meet.google.com"_s});
    QVERIFY(!kelp->isOverlayShown());
    QVERIFY(kelp->preferences()[u"shownMeetings"_s].toObject().isEmpty());
}

QTEST_MAIN(tst_AppDelegate)
#include "tst_AppDelegate.moc"
