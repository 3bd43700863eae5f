#include "schedule/ScenarioGenerator.h"

#include <QDateTime>
#include <QJsonArray>
#include <QTimeZone>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <random>
#include <vector>

namespace kelp::test {

using namespace Qt::StringLiterals;

namespace {

constexpr double hour = 3600;
constexpr double day = 86400;

QJsonObject dateValue(double seconds)
{
    const QDateTime date = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(std::round(seconds * 1000)), Qt::UTC);
    return {{u"date"_s, date.toString(u"yyyy-MM-dd'T'HH:mm:ss.zzz'Z'"_s)}};
}

class ScenarioGenerator
{
public:
    explicit ScenarioGenerator(quint64 seed) : m_random(seed) {}
    QJsonObject generate();

private:
    /// A stretch of wall-clock time in which the clock just runs; the clock jumps from one to the next.
    struct Stretch
    {
        double start;
        int ticks;
    };

    int below(int limit) { return static_cast<int>(m_random() % static_cast<quint64>(limit)); }
    bool chance(int percent) { return below(100) < percent; }
    template<typename T>
    T oneOf(std::initializer_list<T> values)
    {
        return values.begin()[below(static_cast<int>(values.size()))];
    }

    void chooseClock();
    void addBackwardJump();
    void choosePreferences();
    void chooseSavedState();
    void spoilAPreference();
    double moment();
    double aroundTick() { return moment() + oneOf({0.0, 0.0, 0.0, -0.25, 0.25, -m_step, m_step}); }
    double meetingStart();
    double meetingEnd(double start);
    QString calendarKey();
    QJsonObject meeting();
    QJsonArray meetings(int count);
    QJsonArray calendars();
    void changeMeetings();
    QJsonObject action();
    QJsonObject jump(double at, double to) { return {{u"at"_s, at}, {u"do"_s, u"jump"_s}, {u"to"_s, to}}; }
    QJsonObject replacement(double at);
    std::vector<QJsonObject> burst();
    QJsonArray actions();

    std::mt19937_64 m_random;
    double m_step = 5;
    double m_lead = 1; // minutes, as the scheduler will read it
    double m_to = 0;
    std::vector<Stretch> m_stretches;
    std::vector<QJsonObject> m_jumps; // from stretch to stretch
    QJsonObject m_preferences;
    bool m_savedState = false; ///< an earlier run left something behind
    QJsonArray m_calendars;
    std::vector<QJsonObject> m_meetings;
};

QJsonObject ScenarioGenerator::generate()
{
    chooseClock();
    choosePreferences();
    m_calendars = calendars();
    const QJsonArray first = meetings(below(11));
    m_savedState = chance(25);
    if (m_savedState)
        chooseSavedState();
    if (chance(4))
        spoilAPreference();
    const QJsonArray theCalendars = m_calendars;
    const QJsonArray theActions = actions();
    return {{u"from"_s, m_stretches.front().start},
            {u"to"_s, m_to},
            {u"step"_s, m_step},
            {u"preferences"_s, m_preferences},
            {u"calendars"_s, theCalendars},
            {u"meetings"_s, first},
            {u"actions"_s, theActions}};
}

void ScenarioGenerator::chooseClock()
{
    m_step = oneOf({5.0, 5.0, 5.0, 5.0, 5.0, 5.0, 1.0, 7.0, 60.0, 2.5});
    double start = chance(2) ? -500.0 : 1767261600.0 + below(100000);
    start += chance(80) ? 0.0 : oneOf({0.25, 0.5, 0.0006, 0.0004, 0.999});
    m_stretches.push_back({start, 40 + below(120)});
    const auto end = [&] { return m_stretches.back().start + m_step * m_stretches.back().ticks; };
    const int forwardJumps = chance(25) ? 1 + below(2) : 0;
    for (int i = 0; i < forwardJumps; ++i) {
        const double from = end();
        const double gap = oneOf({hour, 2 * day, day, 400.0, 60.0, 0.75, m_step});
        m_stretches.push_back({from + gap, 20 + below(60)});
        m_jumps.push_back(jump(from, from + gap));
    }
    m_to = end();
    if (chance(12))
        addBackwardJump();
}

/// No action but those already under way can follow a jump back before the clock has caught up, so the time until then
/// is simulated to its end; the coarser steps keep two days affordable.
void ScenarioGenerator::addBackwardJump()
{
    const double at = m_to - m_step * below(10);
    double back = oneOf({hour, hour, 200.0, 33.3});
    if (m_step >= 60 || chance(3)) {
        back = 2 * day;
        m_step = m_step < 60 && chance(10) ? m_step : oneOf({60.0, 300.0});
    }
    m_jumps.push_back(jump(at, at - back));
    if (chance(50))
        m_jumps.push_back(jump(at, chance(50) ? at - back : m_stretches.front().start));
}

void ScenarioGenerator::choosePreferences()
{
    if (chance(85)) {
        m_lead = oneOf({0, 0, 1, 1, 1, 2, 5, 10, -3, 1000});
        m_preferences[u"leadMinutes"_s] = m_lead;
    }
    if (chance(85))
        m_preferences[u"snoozeMinutes"_s] = oneOf({0, 1, 1, 5, -2});
    if (chance(40))
        m_preferences[u"onlyWithVideo"_s] = chance(60);
    if (chance(40)) {
        QJsonObject choices;
        for (int i = 1 + below(4); i > 0; --i)
            choices[chance(60) ? calendarKey() : oneOf({u"c"_s, u"d"_s, u"a@x"_s})] = chance(50);
        m_preferences[u"calendarChoices"_s] = choices;
    }
}

/// What an earlier run left behind.
void ScenarioGenerator::chooseSavedState()
{
    const double from = m_stretches.front().start;
    QJsonObject shown;
    QJsonObject snoozed;
    for (const QJsonObject &meeting : m_meetings) {
        const double start = meeting[u"start"_s].toDouble();
        const auto whole = static_cast<qint64>(chance(90) ? std::trunc(start) : std::round(start));
        const QString key = meeting[u"id"_s].toString() + u'@' + QString::number(whole);
        if (chance(30))
            shown[key] = dateValue(chance(40) ? meeting[u"end"_s].toDouble()
                                              : from - day + oneOf({-20.0, -1.0, -0.001, 0.0, 0.001, 1.0, m_step}));
        if (chance(30))
            snoozed[key] = dateValue(from + oneOf({-2 * day, -day - 50, -day - 20, -day - 4, -day - 0.001, -day,
                                                   -day + 0.001, -10.0, 0.0, 50.0, 400.0}));
    }
    if (chance(70))
        m_preferences[u"shownMeetings"_s] = shown;
    if (chance(70))
        m_preferences[u"snoozedMeetings"_s] = snoozed;
    if (chance(30))
        m_preferences[u"pausedUntil"_s] = dateValue(aroundTick());
}

/// A value of the wrong type, as a user's editor may leave it.
void ScenarioGenerator::spoilAPreference()
{
    const QString key = oneOf({u"leadMinutes"_s, u"snoozeMinutes"_s, u"onlyWithVideo"_s, u"shownMeetings"_s,
                               u"snoozedMeetings"_s, u"pausedUntil"_s, u"calendarChoices"_s});
    const QJsonValue old = m_preferences[key];
    if (old.isObject() && key != u"pausedUntil"_s) {
        QJsonObject dictionary = old.toObject();
        dictionary[u"x@1"_s] = u"x"_s;
        m_preferences[key] = dictionary;
    } else if (old.isDouble() && chance(50)) {
        m_preferences[key] = old.toDouble() + (old.toDouble() < 0 ? -0.7 : 0.7);
    } else {
        m_preferences[key] = oneOf({QJsonValue(u"5"_s), QJsonValue(QJsonArray{1}), QJsonValue(QJsonObject())});
    }
}

double ScenarioGenerator::moment()
{
    const Stretch &stretch = m_stretches[static_cast<size_t>(below(static_cast<int>(m_stretches.size())))];
    const double tick = stretch.start + m_step * below(stretch.ticks + 1);
    return chance(65) ? tick : tick + m_step * below(16) / 16.0;
}

double ScenarioGenerator::meetingStart()
{
    if (!m_meetings.empty() && chance(20))
        return m_meetings[static_cast<size_t>(below(static_cast<int>(m_meetings.size())))][u"start"_s].toDouble();
    if (chance(20))
        return moment() - 300 + oneOf({0.0, 0.0, -1.0, -0.125, 0.25, 1.0, m_step, -m_step});
    if (chance(9)) // far too late, unless it was snoozed
        return m_stretches.front().start - 400 - below(5000);
    return moment() + (chance(85) ? m_lead * 60 : 0) + oneOf({0.0, 0.0, 0.0, 0.0, 0.25, 0.75, -0.25});
}

double ScenarioGenerator::meetingEnd(double start)
{
    if (chance(25))
        return moment();
    if (chance(8))
        return moment() - day + oneOf({0.0, 0.0, -m_step, m_step});
    return start +
           oneOf({0.0, -60.0, 0.5, 5.0, 30.0, 60.0, 90.0, 120.0, 300.0, 420.0, 600.0, 1800.0, 3600.0, 3600.0, 2 * day});
}

QString ScenarioGenerator::calendarKey()
{
    return oneOf({u"a@x"_s, u"a@x"_s, u"b@y"_s}) + u'|' + oneOf({u"c"_s, u"c"_s, u"d"_s});
}

QJsonObject ScenarioGenerator::meeting()
{
    const double start = meetingStart();
    const QString id = chance(90) ? u"m"_s + QString::number(below(14)) : oneOf({u"ü|1767262000.0"_s, u"m1@7"_s});
    QJsonObject object{{u"id"_s, id},
                       {u"title"_s, u"M"_s},
                       {u"start"_s, start},
                       {u"end"_s, meetingEnd(start)},
                       {u"calendarID"_s, chance(95) ? calendarKey() : u"z@z|z"_s}};
    object[u"joinURL"_s] = chance(60) ? QJsonValue(u"https://meet.example/x"_s) : QJsonValue(QJsonValue::Null);
    m_meetings.push_back(object);
    return object;
}

QJsonArray ScenarioGenerator::meetings(int count)
{
    for (int i = 0; i < count; ++i)
        meeting();
    if (chance(85)) {
        std::stable_sort(m_meetings.begin(), m_meetings.end(), [](const QJsonObject &a, const QJsonObject &b) {
            return a[u"start"_s].toDouble() < b[u"start"_s].toDouble();
        });
    } else {
        std::shuffle(m_meetings.begin(), m_meetings.end(), m_random);
    }
    QJsonArray array;
    for (const QJsonObject &each : m_meetings)
        array.append(each);
    return array;
}

QJsonArray ScenarioGenerator::calendars()
{
    QJsonArray array;
    for (const QString &key : {u"a@x|c"_s, u"a@x|d"_s, u"b@y|c"_s, u"b@y|d"_s, u"a@x|c"_s}) {
        if (chance(array.size() > 2 ? 40 : 90))
            array.append(QJsonObject{{u"googleID"_s, key.mid(4)},
                                     {u"accountEmail"_s, key.left(3)},
                                     {u"name"_s, u"C"_s},
                                     {u"isPrimary"_s, chance(30)},
                                     {u"googleSelected"_s, chance(70)}});
    }
    return chance(97) ? array : QJsonArray();
}

/// What may happen to the list between two refreshes.
void ScenarioGenerator::changeMeetings()
{
    if (chance(8))
        m_meetings.clear();
    for (int i = below(4); i > 0 && !m_meetings.empty(); --i) {
        const auto index = static_cast<size_t>(below(static_cast<int>(m_meetings.size())));
        QJsonObject &changed = m_meetings[index];
        switch (below(7)) {
        case 0:
            changed[u"start"_s] = meetingStart();
            break;
        case 1:
            changed[u"start"_s] = changed[u"start"_s].toDouble() + oneOf({0.25, 0.5, -0.5, 60.0});
            break;
        case 2:
            changed[u"end"_s] = meetingEnd(changed[u"start"_s].toDouble());
            break;
        case 3:
            changed[u"joinURL"_s] = chance(50) ? QJsonValue(u"https://a.example"_s) : QJsonValue(QJsonValue::Null);
            break;
        case 4:
            changed[u"calendarID"_s] = calendarKey();
            break;
        case 5:
            m_meetings.push_back(QJsonObject(changed));
            break;
        default:
            m_meetings.erase(m_meetings.begin() + static_cast<std::ptrdiff_t>(index));
            break;
        }
    }
}

QJsonObject ScenarioGenerator::replacement(double at)
{
    changeMeetings();
    QJsonObject object{{u"at"_s, at}, {u"do"_s, u"meetings"_s}, {u"meetings"_s, meetings(below(4))}};
    if (chance(15))
        object[u"calendars"_s] = calendars();
    return object;
}

QJsonObject ScenarioGenerator::action()
{
    const double at = chance(96) ? moment() : oneOf({m_stretches.front().start - 50, m_to + 1});
    const int kind = below(100);
    if (kind < 58) {
        const QString what = kind < 23 ? u"dismiss"_s : kind < 46 ? u"snooze"_s : u"join"_s;
        return {{u"at"_s, at}, {u"do"_s, what}};
    }
    if (kind < 68) {
        const double until = chance(30) ? aroundTick() : at + oneOf({-60.0, 0.0, m_step, 60.0, 90.0, 600.0, 2 * hour});
        return {{u"at"_s, at}, {u"do"_s, u"pause"_s}, {u"until"_s, until}};
    }
    if (kind < 73)
        return {{u"at"_s, at}, {u"do"_s, u"resume"_s}};
    if (kind < 81)
        return {{u"at"_s, at}, {u"do"_s, u"restart"_s}};
    if (kind < 87)
        return jump(at, at + oneOf({-30.0, -m_step, -1.0, 0.0, 0.3, m_step, 31.0, 290.0, hour}));
    return replacement(at);
}

/// Several actions between the same two ticks, where what one of them only writes down shows after the next. After a
/// jump back nothing happens until the clock has caught up, except what was due already: so they all are.
std::vector<QJsonObject> ScenarioGenerator::burst()
{
    const auto index = static_cast<size_t>(below(static_cast<int>(m_stretches.size())));
    const double now = m_stretches[index].start;
    const double at = index == 0 ? now - 500 : m_jumps[index - 1][u"at"_s].toDouble();
    std::vector<QJsonObject> list;
    if (chance(40))
        list.push_back({{u"at"_s, at}, {u"do"_s, u"pause"_s}, {u"until"_s, now + oneOf({0.0, 0.0, 60.0, -1.0})}});
    if (chance(50))
        list.push_back(replacement(at));
    if (chance(80))
        list.push_back(jump(at, now - oneOf({1.0, 5.0, 30.0, 100.0})));
    if (chance(60))
        list.push_back({{u"at"_s, at}, {u"do"_s, u"restart"_s}});
    return list;
}

QJsonArray ScenarioGenerator::actions()
{
    std::vector<QJsonObject> list = m_jumps;
    for (const Stretch &stretch : m_stretches) {
        if (chance(40))
            list.push_back(replacement(stretch.start));
    }
    for (int i = below(26); i > 0; --i)
        list.push_back(action());
    const std::vector<QJsonObject> together = chance(m_savedState ? 60 : 15) ? burst() : std::vector<QJsonObject>();
    if (chance(75)) {
        std::stable_sort(list.begin(), list.end(), [](const QJsonObject &a, const QJsonObject &b) {
            return a[u"at"_s].toDouble() < b[u"at"_s].toDouble();
        });
        for (int i = chance(25) ? below(3) : 0; i > 0 && !list.empty(); --i)
            std::swap(list.front(), list[static_cast<size_t>(below(static_cast<int>(list.size())))]);
    } else {
        std::shuffle(list.begin(), list.end(), m_random);
    }
    list.insert(list.end(), together.begin(), together.end());
    QJsonArray array;
    for (const QJsonObject &each : list)
        array.append(each);
    return array;
}

} // namespace

QJsonObject randomScenario(quint64 seed)
{
    return ScenarioGenerator(seed).generate();
}

} // namespace kelp::test
