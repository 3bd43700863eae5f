#include "app/DelegateFixture.h"
#include "desktop/OneAccount.h"
#include "settings/SettingsView.h"

#include <QApplication>
#include <QJsonArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Which meeting is shown when, and what becomes of the panel meanwhile.
class tst_AppReminders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { kelp = std::make_unique<DelegateFixture>(); }
    void cleanup() { kelp.reset(); }

    void theNextMeetingNamesTheOneThatIsLeft();
    void aMeetingThatIsOverIsNotNamed();
    void twoMeetingsAtTheSameTimeComeOneAfterTheOther();
    void snoozesForAsLongAsIsSet_data();
    void snoozesForAsLongAsIsSet();
    void aReminderClosesThePanel();
    void theOverlayKeepsTheKeyboard();
    void thePanelComesOnceTheOverlayHasGone();
    void askedForTwiceThePanelDoesNotCome();
    void theNextReminderIsNotDisturbedByThePanel();
    void aFurtherAccountBringsThePanelBack();
    void aFurtherAccountDoesNotDisturbAReminder();

private:
    void start(const QJsonArray &events, const QJsonObject &morePreferences = {});
    /// Adds the further account, and waits until its calendars are there.
    void askForAccount();
    void allowAccount();

    std::unique_ptr<DelegateFixture> kelp;
};

namespace {

const QString first = u"Stand-up"_s;
const QString second = u"Design review"_s;

/// How the card tells of the meeting that is left.
QStringList leftMeetings(const DelegateFixture &kelp)
{
    return kelp.texts().filter(u"Still on: "_s);
}

} // namespace

void tst_AppReminders::start(const QJsonArray &events, const QJsonObject &morePreferences)
{
    QVERIFY(kelp->signIn(morePreferences));
    QVERIFY2(kelp->startSandbox(events), qPrintable(kelp->sandbox.error()));
    QVERIFY(kelp->launch());
    kelp->platform.opener->handledSchemes = {u"http"_s, u"https"_s};
}

void tst_AppReminders::askForAccount()
{
    kelp->delegate->toggleMainWindow();
    Q_EMIT kelp->panel().signInRequested();
    QVERIFY(kelp->until([this] { return !kelp->platform.opener->opened.isEmpty(); }));
}

void tst_AppReminders::allowAccount()
{
    const QUrl page = QUrl::fromEncoded(kelp->platform.opener->opened.takeFirst().toUtf8());
    // Kelp itself answers there: that needs its event loop.
    auto *browser = new QNetworkAccessManager(kelp->delegate.get());
    browser->get(QNetworkRequest(kelp->sandbox.decide(page, u"allow"_s, furtherAccount)));
    const qsizetype asked = oneAccount::refreshes(kelp->sandbox);
    QVERIFY(kelp->until([&] { return oneAccount::refreshes(kelp->sandbox) == asked + 2; })); // of both accounts
    const QList<StatusLook> &looks = kelp->platform.item->looks;
    QVERIFY(kelp->until([&, before = looks.size()] { return looks.size() > before; })); // and they have answered
}

void tst_AppReminders::theNextMeetingNamesTheOneThatIsLeft()
{
    start({meetingIn(40, first), meetingIn(50, second)});
    QVERIFY(kelp->reads(first));
    QVERIFY(leftMeetings(*kelp).isEmpty());
    kelp->clock.advance(5); // the next tick
    QVERIFY(kelp->reads(second));
    QVERIFY(!kelp->reads(first));
    QCOMPARE(leftMeetings(*kelp).size(), 1);
    QVERIFY(leftMeetings(*kelp).first().contains(first));
}

void tst_AppReminders::aMeetingThatIsOverIsNotNamed()
{
    QJsonObject brief = meetingIn(40, first);
    brief.insert(u"lasts"_s, 60);
    start({brief, meetingIn(170, second)});
    QVERIFY(kelp->reads(first));
    kelp->clock.advance(115);
    QVERIFY(kelp->reads(second));
    QVERIFY(leftMeetings(*kelp).isEmpty());
}

void tst_AppReminders::twoMeetingsAtTheSameTimeComeOneAfterTheOther()
{
    start({meetingIn(40, first), meetingIn(40, second)});
    const QString shown = kelp->reads(first) ? first : second;
    const QString other = shown == first ? second : first;
    QVERIFY(kelp->reads(shown));
    kelp->clock.advance(15); // it is offered again and again meanwhile
    QVERIFY(kelp->reads(shown));
    kelp->press(u"Dismiss"_s);
    QVERIFY(!kelp->isOverlayShown());
    kelp->clock.advance(5);
    QVERIFY(kelp->reads(other));
    QVERIFY(leftMeetings(*kelp).isEmpty());
}

void tst_AppReminders::snoozesForAsLongAsIsSet_data()
{
    QTest::addColumn<int>("minutes");
    QTest::addColumn<int>("seconds");
    QTest::newRow("5 minutes") << 5 << 300;
    QTest::newRow("1 minute") << 1 << 60;
    QTest::newRow("no time") << 0 << 60;
    QTest::newRow("nonsense") << -3 << 60;
}

void tst_AppReminders::snoozesForAsLongAsIsSet()
{
    QFETCH(int, minutes);
    QFETCH(int, seconds);
    start({meetingIn(40, first)}, {{u"snoozeMinutes"_s, minutes}});
    kelp->press(u"Snooze %1 min"_s.arg(std::max(minutes, 1)));
    QVERIFY(!kelp->isOverlayShown());
    kelp->clock.advance(seconds - 1);
    QVERIFY(!kelp->isOverlayShown());
    kelp->clock.advance(5); // the tick after it
    QVERIFY(kelp->reads(first));
}

void tst_AppReminders::aReminderClosesThePanel()
{
    start({meetingIn(100, first)});
    kelp->delegate->toggleMainWindow();
    QVERIFY(kelp->isPanelVisible());
    kelp->clock.advance(35);
    QVERIFY(!kelp->isOverlayShown());
    QVERIFY(kelp->isPanelVisible());
    kelp->clock.advance(10);
    QVERIFY(kelp->reads(first));
    QVERIFY(!kelp->isPanelVisible());
}

void tst_AppReminders::theOverlayKeepsTheKeyboard()
{
    start({meetingIn(40, first)});
    kelp->pressSlashes();
    QVERIFY(!kelp->isPanelVisible());
    kelp->pressReturn();
    QCOMPARE(kelp->platform.opener->opened, QStringList{oneAccount::joinLink});
    QVERIFY(!kelp->isOverlayShown());
}

void tst_AppReminders::thePanelComesOnceTheOverlayHasGone()
{
    start({meetingIn(40, first)});
    kelp->pressSlashes();
    kelp->clock.advance(20);
    QVERIFY(!kelp->isPanelVisible());
    kelp->press(u"Dismiss"_s);
    kelp->clock.advance(0);
    QVERIFY(kelp->platform.activator->isActive(kelp->panel()));
    // Once.
    kelp->pressSlashes();
    QVERIFY(!kelp->isPanelVisible());
}

void tst_AppReminders::askedForTwiceThePanelDoesNotCome()
{
    start({meetingIn(40, first)});
    kelp->pressSlashes();
    kelp->pressSlashes();
    kelp->press(u"Dismiss"_s);
    kelp->clock.advance(5);
    QVERIFY(!kelp->isPanelVisible());
}

void tst_AppReminders::theNextReminderIsNotDisturbedByThePanel()
{
    start({meetingIn(40, first), meetingIn(50, second)});
    kelp->pressSlashes();
    kelp->clock.advance(6);
    QVERIFY(kelp->reads(second));
    QVERIFY(!kelp->isPanelVisible());
    kelp->pressReturn();
    QCOMPARE(kelp->platform.opener->opened.size(), 1);
}

void tst_AppReminders::aFurtherAccountBringsThePanelBack()
{
    start({});
    askForAccount();
    allowAccount();
    QVERIFY(kelp->platform.activator->isActive(kelp->panel()));
    QVERIFY(!kelp->isOverlayShown()); // only the first account is greeted
}

void tst_AppReminders::aFurtherAccountDoesNotDisturbAReminder()
{
    start({meetingIn(100, first)});
    askForAccount();
    kelp->clock.advance(40);
    QVERIFY(kelp->reads(first));
    allowAccount();
    QVERIFY(!kelp->isPanelVisible());
    QVERIFY(kelp->reads(first));
    kelp->pressReturn();
    QCOMPARE(kelp->platform.opener->opened, QStringList{oneAccount::joinLink});
    kelp->clock.advance(0);
    QVERIFY(kelp->platform.activator->isActive(kelp->panel()));
}

QTEST_MAIN(tst_AppReminders)
#include "tst_AppReminders.moc"
