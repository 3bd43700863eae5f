#include "ScheduleScenario.h"

#include <QDateTime>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>
#include <QTimeZone>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <vector>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

constexpr double step = 5;                // seconds between two ticks
constexpr double lead = 60;               // seconds: the default of one minute
constexpr int days = 30;                  // simulated
constexpr double apart = 30;              // seconds that two starts keep apart, so that the user can answer in between
constexpr double refreshEvery = 6 * 3600; // seconds; each list reaches a day ahead, so none is missed

struct MonthMeeting
{
    QString id;
    double start;
    double end;
    bool hasLink;
};

double instantOf(QDate date, QTime time, const QTimeZone &zone)
{
    return static_cast<double>(QDateTime(date, time, zone).toMSecsSinceEpoch()) / 1000;
}

/// A month of a working life in `zone`, in absolute time, ascending.
class Month
{
public:
    Month(QDate firstDay, const QTimeZone &zone);

    [[nodiscard]] double from() const { return m_from; }
    [[nodiscard]] double to() const { return m_to; }
    [[nodiscard]] const std::vector<MonthMeeting> &meetings() const { return m_meetings; }
    [[nodiscard]] int clockChanges() const { return m_clockChanges; }
    [[nodiscard]] QJsonObject scenario() const;

private:
    void addDay(QDate date, int dayNumber, const QTimeZone &zone);
    void addAround(const QDateTime &clockChange);
    void add(const QString &name, double start, double minutes);
    [[nodiscard]] QJsonArray listAt(double now) const;
    [[nodiscard]] QJsonArray actions() const;

    double m_from;
    double m_to;
    int m_clockChanges = 0;
    std::vector<MonthMeeting> m_meetings;
};

Month::Month(QDate firstDay, const QTimeZone &zone)
    : m_from(static_cast<double>(firstDay.startOfDay(zone).toMSecsSinceEpoch()) / 1000 + 2),
      m_to(m_from + days * 86400.0)
{
    for (int i = 0; i < days; ++i)
        addDay(firstDay.addDays(i), i, zone);
    const auto changes = zone.transitions(QDateTime::fromSecsSinceEpoch(static_cast<qint64>(m_from)),
                                          QDateTime::fromSecsSinceEpoch(static_cast<qint64>(m_to)));
    m_clockChanges = static_cast<int>(changes.size());
    for (const QTimeZone::OffsetData &change : changes)
        addAround(change.atUtc);
    std::stable_sort(m_meetings.begin(), m_meetings.end(),
                     [](const MonthMeeting &a, const MonthMeeting &b) { return a.start < b.start; });
}

void Month::addDay(QDate date, int dayNumber, const QTimeZone &zone)
{
    const auto at = [&](int h, int m, int s = 0, int ms = 0) { return instantOf(date, QTime(h, m, s, ms), zone); };
    add(u"night watch"_s, at(2, 15), 90); // falls into the gap or the overlap when the clocks change
    add(u"early call"_s, at(2, 45, 3), 15);
    add(u"breakfast"_s, at(8, 0), 30); // on the screen when Kelp starts anew
    add(u"late watch"_s, at(23, 59, 1), 120);
    if (date.dayOfWeek() > 5)
        return;
    add(u"stand-up"_s, at(9, 30), 15);
    add(u"review"_s, at(9, 40, 1), 60);
    add(u"overlapping"_s, at(10, 0, 2, 500), 90);
    add(u"check-in"_s, at(10, 1), 0); // no time at all, right after another
    add(u"lunch"_s, at(12, 0, 4, 750), 45);
    add(u"planning"_s, at(13, dayNumber, dayNumber * 2, dayNumber * 33), 30);
    add(u"one to one"_s, at(16, 0), 25);
    add(u"hand-over"_s, at(16, 0, 31), 25);
}

void Month::addAround(const QDateTime &clockChange)
{
    const double change = static_cast<double>(clockChange.toSecsSinceEpoch());
    for (int minutes = -120; minutes <= 120; minutes += 10)
        add(u"around %1"_s.arg(minutes), change + minutes * 60.0, 20);
}

/// Meetings that start together refuse each other; this is about being on time.
void Month::add(const QString &name, double start, double minutes)
{
    const bool crowded = std::any_of(m_meetings.begin(), m_meetings.end(),
                                     [&](const MonthMeeting &other) { return std::abs(other.start - start) < apart; });
    if (crowded || start - lead < m_from || start > m_to)
        return;
    m_meetings.push_back(
        {u"%1|%2"_s.arg(name).arg(start, 0, 'f', 3), start, start + minutes * 60, m_meetings.size() % 2 == 0});
}

/// What a refresh finds at `now`: all that ends after the last hour and starts within a day.
QJsonArray Month::listAt(double now) const
{
    QJsonArray list;
    for (const MonthMeeting &meeting : m_meetings) {
        if (meeting.end > now - 3600 && meeting.start < now + 86400)
            list.append(
                QJsonObject{{u"id"_s, meeting.id},
                            {u"title"_s, u"M"_s},
                            {u"start"_s, meeting.start},
                            {u"end"_s, meeting.end},
                            {u"joinURL"_s, meeting.hasLink ? QJsonValue(u"https://meet.example/m"_s) : QJsonValue()},
                            {u"calendarID"_s, u"a@x|c"_s}});
    }
    return list;
}

/// The user dismisses or joins most reminders some seconds after they came and leaves some alone; the list is
/// refreshed through the day, and Kelp starts anew every morning.
QJsonArray Month::actions() const
{
    QJsonArray actions;
    int number = 0;
    for (const MonthMeeting &meeting : m_meetings) {
        const double answer = meeting.start - lead + 6 + number % 13;
        if (++number % 7 != 0)
            actions.append(
                QJsonObject{{u"at"_s, answer}, {u"do"_s, meeting.hasLink && number % 3 ? u"join"_s : u"dismiss"_s}});
    }
    for (double now = m_from + refreshEvery; now <= m_to; now += refreshEvery)
        actions.append(QJsonObject{{u"at"_s, now}, {u"do"_s, u"meetings"_s}, {u"meetings"_s, listAt(now)}});
    for (int i = 1; i < days; ++i)
        actions.append(QJsonObject{{u"at"_s, m_from + i * 86400.0 + 8 * 3600}, {u"do"_s, u"restart"_s}});
    return actions;
}

QJsonObject Month::scenario() const
{
    const QJsonObject calendar{{u"googleID"_s, u"c"_s},
                               {u"accountEmail"_s, u"a@x"_s},
                               {u"name"_s, u"C"_s},
                               {u"isPrimary"_s, true},
                               {u"googleSelected"_s, true}};
    return {{u"from"_s, m_from},
            {u"to"_s, m_to},
            {u"step"_s, step},
            {u"calendars"_s, QJsonArray{calendar}},
            {u"meetings"_s, listAt(m_from)},
            {u"actions"_s, actions()}};
}

/// The zone of the process, put back at the end.
class ProcessZone
{
public:
    explicit ProcessZone(const QByteArray &name) : m_before(qgetenv("TZ")) { set(name); }
    ~ProcessZone() { set(m_before); }
    Q_DISABLE_COPY_MOVE(ProcessZone)

private:
    static void set(const QByteArray &name)
    {
        qputenv("TZ", name);
        tzset();
    }

    QByteArray m_before;
};

} // namespace

class tst_ScheduleMonth : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void remindsOfEveryMeetingOnceAndInTime_data();
    void remindsOfEveryMeetingOnceAndInTime();
};

void tst_ScheduleMonth::remindsOfEveryMeetingOnceAndInTime_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QDate>("firstDay");
    const auto row = [](const char *name, const char *zone, QDate firstDay) {
        QTest::newRow(name) << QByteArray(zone) << firstDay;
    };
    row("Berlin, forward", "Europe/Berlin", QDate(2026, 3, 16));
    row("Berlin, back", "Europe/Berlin", QDate(2026, 10, 12));
    row("New York, forward", "America/New_York", QDate(2026, 2, 24));
    row("New York, back", "America/New_York", QDate(2026, 10, 20));
    row("Lord Howe, half an hour forward", "Australia/Lord_Howe", QDate(2026, 9, 21));
    row("Lord Howe, half an hour back", "Australia/Lord_Howe", QDate(2026, 3, 23));
}

void tst_ScheduleMonth::remindsOfEveryMeetingOnceAndInTime()
{
    QFETCH(QByteArray, zone);
    QFETCH(QDate, firstDay);
    const ProcessZone processZone(zone);
    const QTimeZone timeZone(zone);
    QVERIFY2(timeZone.isValid(), "the time zone database is missing");
    const Month month(firstDay, timeZone);
    QCOMPARE(month.clockChanges(), 1);
    QVERIFY(month.meetings().size() > 250);

    const Result<QList<QByteArray>, QString> lines = probe::runScheduleScenario(month.scenario());
    QVERIFY2(lines, qPrintable(lines ? QString() : lines.error()));

    QHash<QString, double> shownAt;
    int duplicates = 0;
    for (const QByteArray &line : *lines) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        const QString event = object[u"event"_s].toString();
        QVERIFY2(event == u"shown"_s || event == u"hidden"_s, line.constData());
        if (event != u"shown"_s)
            continue;
        duplicates += shownAt.contains(object[u"id"_s].toString());
        shownAt.insert(object[u"id"_s].toString(), object[u"at"_s].toDouble());
    }
    QCOMPARE(duplicates, 0);

    double latest = 0;
    for (const MonthMeeting &meeting : month.meetings()) {
        QVERIFY2(shownAt.contains(meeting.id), qPrintable(u"missed: "_s + meeting.id));
        const double late = shownAt.value(meeting.id) - (meeting.start - lead);
        QVERIFY2(late >= 0 && late <= step, qPrintable(u"%1: %2 s after it was due"_s.arg(meeting.id).arg(late)));
        latest = std::max(latest, late);
    }
    QCOMPARE(shownAt.size(), static_cast<qsizetype>(month.meetings().size()));
    qInfo() << zone << month.meetings().size() << "meetings, the latest" << latest << "s after it was due";
}

QTEST_GUILESS_MAIN(tst_ScheduleMonth)
#include "tst_ScheduleMonth.moc"
