#include "schedule/Scheduler.h"

#include "preferences/Preferences.h"
#include "support/FakeAccounts.h"
#include "support/FakeClock.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

const QString key = u"a@x|c"_s;

/// A source whose answers a test gives by hand.
class FakeSource final : public MeetingSource
{
public:
    void fetch(double hours, CalendarFilter isEnabled, QObject *, Callback callback) override
    {
        lastHours = hours;
        filter = std::move(isEnabled);
        waiting.append(std::move(callback));
        ++fetches;
    }
    void answer(const FetchResult &result) { waiting.takeFirst()(result); }

    double lastHours = 0;
    CalendarFilter filter;
    QList<Callback> waiting;
    int fetches = 0;
};

CalendarInfo calendar(const QString &id = u"c"_s, bool selected = true)
{
    return {.googleID = id, .accountEmail = u"a@x"_s, .name = id, .googleSelected = selected};
}

} // namespace

class tst_Scheduler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void refreshesAtStartAndEveryFiveMinutes();
    void ticksEveryFiveSeconds();
    void asksForADayOfEnabledCalendars();
    void takesOverWhatARefreshBrought();
    void refreshesOnceMoreHoweverOftenItWasAsked();
    void emptiesItsListsWithoutAccounts();
    void callsBackAfterARefreshThatBeganLater();
    void triesAgainAfterTransientErrors();
    void forgetsARetryThatAnotherRefreshReplaced();
    void waitsForTheIntervalAfterLastingErrors();
    void refreshesAtMostEveryFiveSecondsAfterWaking();

    void showsAMeetingAtItsLeadTime_data();
    void showsAMeetingAtItsLeadTime();
    void dropsAMeetingThatStartedLongAgo();
    void offersARefusedMeetingAgain();
    void offersOneMeetingPerTick();
    void showsASnoozedMeetingAgainPastTheCutoff();
    void swallowsWhatComesDueDuringAPause();
    void endsAPauseAtTheTick();
    void showsAMovedMeetingAgain();
    void remembersAcrossARestart();
    void forgetsADayAfterTheEnd();
    void startsAfreshFromDamagedState();

    void filtersByCalendarAndLink();
    void prefersTheUsersChoiceOfCalendars_data();
    void prefersTheUsersChoiceOfCalendars();
    void storesAChoiceAndRefreshes();
    void withoutChoicesEveryCalendarIsAtItsDefaultAgain();
    void findsTheNextMeeting();
    void findsTheNextPopup();
    void listsWhatIsUpcoming();
    void ticksQuicklyOverTenThousandMeetings();

private:
    void make()
    {
        scheduler = std::make_unique<Scheduler>(Scheduler::Services{*preferences, *clock, *source, *accounts});
        scheduler->onDue = [this](const Meeting &meeting) {
            offered.append(meeting.id);
            return accept;
        };
    }
    /// `start` in seconds from now.
    Meeting meeting(const QString &id, double start, double length = 1800) const
    {
        return {.id = id, .title = id, .start = now() + start, .end = now() + start + length, .calendarID = key};
    }
    [[nodiscard]] Instant now() const { return clock->now(); }
    void give(const QList<Meeting> &meetings, const QList<CalendarInfo> &calendars = {calendar()})
    {
        scheduler->apply({.calendars = calendars, .meetings = meetings});
    }
    /// Ticks every five seconds for `seconds`.
    void run(double seconds)
    {
        for (double passed = 0; passed < seconds; passed += 5) {
            clock->advance(5);
            scheduler->tick();
        }
    }

    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<FakeClock> clock;
    std::unique_ptr<FakeSource> source;
    std::unique_ptr<FakeAccounts> accounts;
    std::unique_ptr<Scheduler> scheduler;
    QStringList offered;
    bool accept = true;
};

void tst_Scheduler::init()
{
    scheduler.reset();
    preferences = std::make_unique<Preferences>();
    clock = std::make_unique<FakeClock>();
    source = std::make_unique<FakeSource>();
    accounts = std::make_unique<FakeAccounts>();
    accounts->list = {{u"a@x"_s, u"1"_s}};
    offered.clear();
    accept = true;
    make();
}

void tst_Scheduler::refreshesAtStartAndEveryFiveMinutes()
{
    scheduler->start();
    QCOMPARE(source->fetches, 1);
    source->answer({});
    clock->advance(299);
    QCOMPARE(source->fetches, 1);
    clock->advance(1);
    QCOMPARE(source->fetches, 2);
    source->answer({});
    clock->advance(300);
    QCOMPARE(source->fetches, 3);
}

void tst_Scheduler::ticksEveryFiveSeconds()
{
    QSignalSpy ticks(scheduler.get(), &Scheduler::changed);
    scheduler->start();
    clock->advance(60);
    QCOMPARE(ticks.size(), 12);
    source->answer({});
    QCOMPARE(ticks.size(), 13); // a refresh ends with a tick
}

void tst_Scheduler::asksForADayOfEnabledCalendars()
{
    scheduler->refresh();
    QCOMPARE(source->lastHours, 24);
    QVERIFY(source->filter(calendar(u"c"_s, true)));
    QVERIFY(!source->filter(calendar(u"c"_s, false)));
}

void tst_Scheduler::takesOverWhatARefreshBrought()
{
    scheduler->refresh();
    QVERIFY(scheduler->isRefreshing());
    clock->advance(2);
    source->answer({.calendars = {calendar()}, .meetings = {meeting(u"m"_s, 9999)}, .errors = {u"a"_s, u"b"_s}});
    QVERIFY(!scheduler->isRefreshing());
    QCOMPARE(scheduler->calendars().size(), 1);
    QCOMPARE(scheduler->allMeetings().size(), 1);
    QCOMPARE(scheduler->lastError(), u"a\nb"_s);
    QCOMPARE(scheduler->lastSync(), now());
    scheduler->refresh();
    source->answer({});
    QVERIFY(scheduler->allMeetings().isEmpty());
    QVERIFY(!scheduler->lastError());
}

void tst_Scheduler::refreshesOnceMoreHoweverOftenItWasAsked()
{
    scheduler->refresh();
    for (int i = 0; i < 5; ++i)
        scheduler->refresh();
    QCOMPARE(source->fetches, 1);
    source->answer({});
    clock->advance(0);
    QCOMPARE(source->fetches, 2);
    source->answer({});
    clock->advance(0);
    QCOMPARE(source->fetches, 2);
}

void tst_Scheduler::emptiesItsListsWithoutAccounts()
{
    scheduler->refresh();
    source->answer({.calendars = {calendar()}, .meetings = {meeting(u"m"_s, 9999)}, .errors = {u"a"_s}});
    const auto sync = scheduler->lastSync();
    accounts->list.clear();
    clock->advance(10);
    QSignalSpy changes(scheduler.get(), &Scheduler::changed);
    scheduler->refresh();
    QCOMPARE(source->fetches, 1);
    QCOMPARE(changes.size(), 1);
    QVERIFY(scheduler->calendars().isEmpty());
    QVERIFY(scheduler->allMeetings().isEmpty());
    QVERIFY(!scheduler->lastError());
    QCOMPARE(scheduler->lastSync(), sync);
}

void tst_Scheduler::callsBackAfterARefreshThatBeganLater()
{
    int done = 0;
    scheduler->refresh();
    scheduler->refresh([&] { ++done; });
    source->answer({});
    QCOMPARE(done, 0);
    clock->advance(0);
    source->answer({});
    QCOMPARE(done, 1);
    accounts->list.clear();
    scheduler->refresh([&] { ++done; });
    QCOMPARE(done, 2);
}

void tst_Scheduler::triesAgainAfterTransientErrors()
{
    const FetchResult failure{.errors = {u"no network"_s}, .errorsAreTransient = true};
    scheduler->refresh();
    source->answer(failure);
    int expected = 1;
    for (const double delay : {5.0, 15.0, 30.0, 60.0}) {
        clock->advance(delay - 1);
        QCOMPARE(source->fetches, expected);
        clock->advance(1);
        QCOMPARE(source->fetches, ++expected);
        source->answer(failure);
    }
    clock->advance(299);
    QCOMPARE(source->fetches, expected);
    // A refresh that worked starts the row of retries anew.
    scheduler->refresh();
    source->answer({});
    scheduler->refresh();
    source->answer(failure);
    clock->advance(5);
    QCOMPARE(source->fetches, expected + 3);
}

void tst_Scheduler::forgetsARetryThatAnotherRefreshReplaced()
{
    scheduler->refresh();
    source->answer({.errors = {u"no network"_s}, .errorsAreTransient = true});
    clock->advance(2);
    scheduler->refresh();
    source->answer({});
    clock->advance(60);
    QCOMPARE(source->fetches, 2);
}

void tst_Scheduler::waitsForTheIntervalAfterLastingErrors()
{
    scheduler->refresh();
    source->answer({.errors = {u"revoked"_s}, .errorsAreTransient = false});
    clock->advance(299);
    QCOMPARE(source->fetches, 1);
}

void tst_Scheduler::refreshesAtMostEveryFiveSecondsAfterWaking()
{
    for (int i = 0; i < 100; ++i) {
        scheduler->refreshAfterWake();
        if (!source->waiting.isEmpty())
            source->answer({});
        clock->advance(0.1);
    }
    QVERIFY2(source->fetches <= 3, qPrintable(QString::number(source->fetches)));
    QVERIFY(source->fetches >= 2);
    clock->advance(5);
    const int fetches = source->fetches;
    clock->advance(100);
    QCOMPARE(source->fetches, fetches);
}

void tst_Scheduler::showsAMeetingAtItsLeadTime_data()
{
    QTest::addColumn<int>("lead");
    for (const int lead : {0, 1, 5, -2, 100000})
        QTest::addRow("%d min", lead) << lead;
}

void tst_Scheduler::showsAMeetingAtItsLeadTime()
{
    QFETCH(int, lead);
    preferences->set(preference::leadMinutes, lead);
    const double start = std::max(600.0, lead * 60.0 + 600);
    give({meeting(u"m"_s, start)});
    run(start - lead * 60 - 5);
    QVERIFY(offered.isEmpty());
    run(5);
    QCOMPARE(offered.size(), 1);
    run(60);
    QCOMPARE(offered.size(), 1);
}

void tst_Scheduler::dropsAMeetingThatStartedLongAgo()
{
    give({meeting(u"six"_s, -360), meeting(u"five"_s, -300), meeting(u"four"_s, -240)});
    scheduler->tick();
    scheduler->tick();
    scheduler->tick();
    QCOMPARE(offered, QStringList({u"five"_s, u"four"_s}));
    give({meeting(u"over"_s, -100, 100)});
    scheduler->tick();
    QCOMPARE(offered.size(), 2);
}

void tst_Scheduler::offersARefusedMeetingAgain()
{
    give({meeting(u"m"_s, 0)});
    accept = false;
    scheduler->tick();
    scheduler->tick();
    QCOMPARE(offered.size(), 2);
    accept = true;
    scheduler->tick();
    scheduler->tick();
    QCOMPARE(offered.size(), 3);
}

void tst_Scheduler::offersOneMeetingPerTick()
{
    give({meeting(u"a"_s, 0), meeting(u"b"_s, 0)});
    scheduler->tick();
    QCOMPARE(offered, QStringList{u"a"_s});
    scheduler->tick();
    QCOMPARE(offered, QStringList({u"a"_s, u"b"_s}));
    // Without anybody to show it, nothing is marked.
    give({meeting(u"c"_s, 0)});
    scheduler->onDue = {};
    scheduler->tick();
    make();
    give({meeting(u"c"_s, 0)});
    scheduler->tick();
    QCOMPARE(offered.last(), u"c"_s);
}

void tst_Scheduler::showsASnoozedMeetingAgainPastTheCutoff()
{
    const Meeting snoozed = meeting(u"m"_s, -240);
    give({snoozed});
    scheduler->tick();
    scheduler->snooze(snoozed, 300);
    run(295);
    QCOMPARE(offered.size(), 1);
    QVERIFY(preferences->get(preference::shownMeetings).isEmpty());
    run(5);
    QCOMPARE(offered.size(), 2);
    QVERIFY(preferences->get(preference::snoozedMeetings).isEmpty());
    run(600);
    QCOMPARE(offered.size(), 2);
}

void tst_Scheduler::swallowsWhatComesDueDuringAPause()
{
    QSignalSpy swallowed(scheduler.get(), &Scheduler::swallowed);
    give({meeting(u"a"_s, 60), meeting(u"b"_s, 60)});
    scheduler->setPausedUntil(now() + 30);
    QVERIFY(scheduler->isPaused());
    scheduler->tick();
    QCOMPARE(swallowed.size(), 2);
    scheduler->setPausedUntil({});
    run(300);
    QVERIFY(offered.isEmpty());
}

void tst_Scheduler::endsAPauseAtTheTick()
{
    scheduler->setPausedUntil(now() + 10);
    QVERIFY(preferences->contains(preference::pausedUntil));
    clock->advance(10);
    QVERIFY(!scheduler->isPaused());
    scheduler->tick();
    QVERIFY(!scheduler->pausedUntil());
    QVERIFY(!preferences->contains(preference::pausedUntil));
    scheduler->setPausedUntil(now() + 10);
    clock->advance(11);
    give({});
    QVERIFY(!preferences->contains(preference::pausedUntil));
}

void tst_Scheduler::showsAMovedMeetingAgain()
{
    Meeting moved = meeting(u"m"_s, 0);
    give({moved});
    scheduler->tick();
    moved.start = moved.start + 60;
    give({moved});
    scheduler->tick();
    QCOMPARE(offered.size(), 2);
}

void tst_Scheduler::remembersAcrossARestart()
{
    const Meeting shown = meeting(u"shown"_s, 0);
    const Meeting snoozed = meeting(u"snoozed"_s, 10);
    give({shown, snoozed});
    scheduler->tick();
    scheduler->tick();
    scheduler->snooze(snoozed, 60);
    scheduler->setPausedUntil(now() + 10);
    make();
    QVERIFY(scheduler->isPaused());
    give({shown, snoozed});
    run(100);
    QCOMPARE(offered, QStringList({u"shown"_s, u"snoozed"_s, u"snoozed"_s}));
}

void tst_Scheduler::forgetsADayAfterTheEnd()
{
    give({meeting(u"m"_s, 0, 600)});
    scheduler->tick();
    clock->advance(600 + 86400 - 1);
    give({});
    QCOMPARE(preferences->get(preference::shownMeetings).size(), 1);
    clock->advance(1);
    give({});
    QVERIFY(preferences->get(preference::shownMeetings).isEmpty());
}

void tst_Scheduler::startsAfreshFromDamagedState()
{
    preferences = std::make_unique<Preferences>(QJsonObject{{u"shownMeetings"_s, 7},
                                                            {u"snoozedMeetings"_s, QJsonObject{{u"m@1"_s, u"soon"_s}}},
                                                            {u"pausedUntil"_s, u"tomorrow"_s},
                                                            {u"leadMinutes"_s, u"x"_s}});
    make();
    QVERIFY(!scheduler->isPaused());
    give({meeting(u"m"_s, 1)});
    scheduler->tick();
    QVERIFY(offered.isEmpty()); // a lead that is no number is 0
    run(5);
    QCOMPARE(offered.size(), 1);
}

void tst_Scheduler::filtersByCalendarAndLink()
{
    Meeting linked = meeting(u"linked"_s, 100);
    linked.joinURL = MeetingLink::fromText(u"https://zoom.us/j/1"_s);
    Meeting elsewhere = meeting(u"elsewhere"_s, 100);
    elsewhere.calendarID = u"a@x|off"_s;
    give({meeting(u"plain"_s, 100), linked, elsewhere}, {calendar(), calendar(u"off"_s, false)});
    QCOMPARE(scheduler->meetings().size(), 2);
    preferences->set(preference::onlyWithVideo, true);
    QCOMPARE(scheduler->meetings().size(), 1);
    QCOMPARE(scheduler->meetings().first().id, u"linked"_s);
    give({linked}, {});
    QVERIFY(scheduler->meetings().isEmpty());
}

void tst_Scheduler::prefersTheUsersChoiceOfCalendars_data()
{
    QTest::addColumn<QJsonObject>("choices");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<bool>("primary");
    QTest::addColumn<bool>("enabled");
    const QJsonObject none;
    QTest::newRow("selected") << none << true << false << true;
    QTest::newRow("primary") << none << false << true << true;
    QTest::newRow("neither") << none << false << false << false;
    QTest::newRow("chosen") << QJsonObject{{key, true}} << false << false << true;
    QTest::newRow("not chosen") << QJsonObject{{key, false}} << true << true << false;
    QTest::newRow("by identifier alone") << QJsonObject{{u"c"_s, false}} << true << true << false;
    QTest::newRow("the key goes first") << QJsonObject{{key, true}, {u"c"_s, false}} << false << false << true;
    QTest::newRow("damaged") << QJsonObject{{key, 7}} << true << false << true;
}

void tst_Scheduler::prefersTheUsersChoiceOfCalendars()
{
    QFETCH(QJsonObject, choices);
    QFETCH(bool, selected);
    QFETCH(bool, primary);
    QFETCH(bool, enabled);
    preferences = std::make_unique<Preferences>(QJsonObject{{u"calendarChoices"_s, choices}});
    make();
    CalendarInfo info = calendar(u"c"_s, selected);
    info.isPrimary = primary;
    QCOMPARE(scheduler->isEnabled(info), enabled);
    give({}, {info});
    QCOMPARE(scheduler->enabledCalendarCount(), enabled ? 1 : 0);
}

void tst_Scheduler::storesAChoiceAndRefreshes()
{
    QSignalSpy announced(scheduler.get(), &Scheduler::stateChanged);
    scheduler->setCalendar(calendar(), false);
    QVERIFY(!announced.isEmpty());
    QVERIFY(!preferences->get(preference::calendarChoices).value(key, true));
    QCOMPARE(source->fetches, 1);
    QVERIFY(!scheduler->isEnabled(calendar()));
}

void tst_Scheduler::withoutChoicesEveryCalendarIsAtItsDefaultAgain()
{
    const CalendarInfo on = calendar(u"on"_s, true);
    const CalendarInfo off = calendar(u"off"_s, false);
    Meeting ofOn = meeting(u"of on"_s, 600);
    ofOn.calendarID = u"a@x|on"_s;
    Meeting ofOff = meeting(u"of off"_s, 600);
    ofOff.calendarID = u"a@x|off"_s;
    give({ofOn, ofOff}, {on, off});
    scheduler->setCalendar(on, false);
    scheduler->setCalendar(off, true);
    const auto shown = [this] {
        QStringList ids;
        for (const Meeting &each : scheduler->meetings())
            ids.append(each.id);
        return ids;
    };
    QCOMPARE(shown(), QStringList{u"of off"_s});
    preferences->remove(preference::calendarChoices);
    QCOMPARE(shown(), QStringList{u"of on"_s});
    QVERIFY(scheduler->isEnabled(on) && !scheduler->isEnabled(off));
}

void tst_Scheduler::findsTheNextMeeting()
{
    give({meeting(u"over"_s, -100, 100), meeting(u"running"_s, -50, 100), meeting(u"next"_s, 100)});
    QCOMPARE(scheduler->nextMeeting()->id, u"running"_s);
    give({});
    QVERIFY(!scheduler->nextMeeting());
}

void tst_Scheduler::findsTheNextPopup()
{
    const Meeting first = meeting(u"first"_s, 100);
    give({first, meeting(u"second"_s, 200), meeting(u"twin"_s, 200)});
    QCOMPARE(scheduler->nextPopup()->meeting.id, u"first"_s);
    QCOMPARE(scheduler->nextPopup()->at, now() + 40);
    scheduler->snooze(first, 500);
    QCOMPARE(scheduler->nextPopup()->meeting.id, u"second"_s);
    QCOMPARE(scheduler->nextPopup()->at, now() + 140);
    give({first});
    QCOMPARE(scheduler->nextPopup()->at, now() + 500);
    give({});
    QVERIFY(!scheduler->nextPopup());
}

void tst_Scheduler::listsWhatIsUpcoming()
{
    const Meeting a = meeting(u"a"_s, 100);
    give({meeting(u"over"_s, -100, 100), a, meeting(u"b"_s, 200), meeting(u"c"_s, 300)});
    QCOMPARE(scheduler->upcoming({}, 10).size(), 3);
    QCOMPARE(scheduler->upcoming(a, 10).first().id, u"b"_s);
    QCOMPARE(scheduler->upcoming(a, 1).size(), 1);
    QVERIFY(scheduler->upcoming(a, 0).isEmpty());
    QVERIFY(scheduler->upcoming(a, -1).isEmpty());
}

void tst_Scheduler::ticksQuicklyOverTenThousandMeetings()
{
    QList<Meeting> many;
    for (int i = 0; i < 10'000; ++i)
        many.append(meeting(QString::number(i), i % 2 ? -3600 : 7200 + i, 1800));
    give(many);
    QElapsedTimer timer;
    timer.start();
    constexpr int ticks = 50;
    for (int i = 0; i < ticks; ++i)
        scheduler->tick();
    const double milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6 / ticks;
    qInfo("a tick over 10,000 meetings takes %.3f ms", milliseconds);
    QVERIFY(offered.isEmpty());
    QVERIFY(milliseconds < 50); // 1 on a quiet machine
}

QTEST_GUILESS_MAIN(tst_Scheduler)
#include "tst_Scheduler.moc"
