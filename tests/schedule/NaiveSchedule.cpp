#include "schedule/NaiveSchedule.h"

#include "schedule/NaiveScenario.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace kelp::test {

using namespace Qt::StringLiterals;

namespace {

constexpr double lateCutoff = 300;
constexpr double rememberedAfterEnd = 86400;

struct Action
{
    QJsonObject object;
    double at = 0;
    bool done = false;
};

/// What the scheduler remembers; once as it has it in mind and once as it is on disk.
struct Memory
{
    std::vector<Note> shown;
    std::vector<Note> snoozed;
    std::optional<double> pausedUntil;
};

const Note *findNote(const std::vector<Note> &notes, const QString &key)
{
    for (const Note &note : notes) {
        if (note.key == key)
            return &note;
    }
    return nullptr;
}

void removeNote(std::vector<Note> &notes, const QString &key)
{
    std::erase_if(notes, [&](const Note &note) { return note.key == key; });
}

void putNote(std::vector<Note> &notes, const QString &key, double date)
{
    removeNote(notes, key);
    notes.push_back({key, date});
}

/// The file keeps milliseconds.
double stored(double date)
{
    return std::round(date * 1000) / 1000;
}

std::vector<Note> stored(std::vector<Note> notes)
{
    for (Note &note : notes)
        note.date = stored(note.date);
    return notes;
}

class NaiveSchedule
{
public:
    explicit NaiveSchedule(const QJsonObject &scenario);
    QList<QByteArray> run();

private:
    void runDueActions();
    void act(const QJsonObject &action);
    void snooze();
    void hide();
    void restart();
    void prune();
    void tick();
    void offer(const NaiveMeeting &meeting);
    void markShown(const NaiveMeeting &meeting);
    void setPausedUntil(std::optional<double> date);
    bool isOn(const NaiveCalendar &calendar) const;
    bool isListed(const NaiveMeeting &meeting) const;
    bool isCandidate(const NaiveMeeting &meeting) const;
    double showTime(const NaiveMeeting &meeting) const;
    void say(const QString &event, const QString &id);
    void sayShown(const QString &id, const std::optional<QString> &previous);
    void write(const QJsonObject &line);

    double m_now;
    double m_last;
    double m_step;
    double m_leadMinutes;
    double m_snoozeMinutes;
    bool m_onlyWithVideo;
    std::vector<Choice> m_choices;
    std::vector<NaiveCalendar> m_calendars;
    std::vector<NaiveMeeting> m_meetings;
    std::vector<Action> m_actions;
    Memory m_mind;
    Memory m_disk;
    std::optional<NaiveMeeting> m_onScreen;
    QList<QByteArray> m_lines;
};

NaiveSchedule::NaiveSchedule(const QJsonObject &scenario)
    : m_now(scenario["from"_L1].toDouble()),
      m_last(scenario["to"_L1].toDouble()),
      m_step(scenario["step"_L1].toDouble())
{
    const QJsonObject preferences = scenario["preferences"_L1].toObject();
    m_leadMinutes = readInteger(preferences["leadMinutes"_L1], 1);
    m_snoozeMinutes = readInteger(preferences["snoozeMinutes"_L1], 1);
    m_onlyWithVideo = preferences["onlyWithVideo"_L1].toBool(false);
    m_choices = readChoices(preferences["calendarChoices"_L1]);
    m_disk.shown = readNotes(preferences["shownMeetings"_L1]);
    m_disk.snoozed = readNotes(preferences["snoozedMeetings"_L1]);
    m_disk.pausedUntil = readDate(preferences["pausedUntil"_L1]);
    m_calendars = readCalendars(scenario["calendars"_L1]);
    m_meetings = readMeetings(scenario["meetings"_L1]);
    for (const QJsonValue &action : scenario["actions"_L1].toArray())
        m_actions.push_back({action.toObject(), action["at"_L1].toDouble()});
}

QList<QByteArray> NaiveSchedule::run()
{
    restart();
    while (m_now <= m_last) {
        runDueActions();
        if (m_now > m_last)
            break;
        tick();
        m_now += m_step;
    }
    return m_lines;
}

void NaiveSchedule::runDueActions()
{
    for (;;) {
        Action *next = nullptr;
        for (Action &action : m_actions) {
            if (!next && !action.done && action.at <= m_now)
                next = &action;
        }
        if (!next)
            return;
        next->done = true;
        act(next->object);
    }
}

void NaiveSchedule::act(const QJsonObject &action)
{
    const QString what = action["do"_L1].toString();
    if (what == "join"_L1) {
        if (m_onScreen && m_onScreen->hasLink)
            hide();
    } else if (what == "dismiss"_L1) {
        if (m_onScreen)
            hide();
    } else if (what == "snooze"_L1) {
        if (m_onScreen)
            snooze();
    } else if (what == "pause"_L1) {
        setPausedUntil(action["until"_L1].toDouble());
    } else if (what == "resume"_L1) {
        setPausedUntil({});
    } else if (what == "restart"_L1) {
        restart();
    } else if (what == "jump"_L1) {
        m_now = action["to"_L1].toDouble();
    } else if (what == "meetings"_L1) {
        m_meetings = readMeetings(action["meetings"_L1]);
        if (action.contains("calendars"_L1))
            m_calendars = readCalendars(action["calendars"_L1]);
        prune();
    }
}

void NaiveSchedule::snooze()
{
    removeNote(m_mind.shown, m_onScreen->key);
    m_disk.shown = stored(m_mind.shown);
    putNote(m_mind.snoozed, m_onScreen->key, m_now + std::max(m_snoozeMinutes, 1.0) * 60);
    m_disk.snoozed = stored(m_mind.snoozed);
    hide();
}

void NaiveSchedule::hide()
{
    say(u"hidden"_s, m_onScreen->id);
    m_onScreen.reset();
}

void NaiveSchedule::restart()
{
    m_onScreen.reset();
    m_mind = m_disk;
    prune();
}

void NaiveSchedule::prune()
{
    const auto old = [&](const Note &note) { return note.date <= m_now - rememberedAfterEnd; };
    if (std::erase_if(m_mind.shown, old) > 0)
        m_disk.shown = stored(m_mind.shown);
    if (std::erase_if(m_mind.snoozed, old) > 0)
        m_disk.snoozed = stored(m_mind.snoozed);
    if (m_mind.pausedUntil && *m_mind.pausedUntil <= m_now)
        setPausedUntil({});
}

void NaiveSchedule::tick()
{
    if (m_mind.pausedUntil && *m_mind.pausedUntil <= m_now)
        setPausedUntil({});
    for (const NaiveMeeting &meeting : m_meetings) {
        if (!isListed(meeting) || !isCandidate(meeting) || showTime(meeting) > m_now)
            continue;
        if (m_mind.pausedUntil) {
            say(u"swallowed"_s, meeting.id);
            markShown(meeting);
            continue;
        }
        offer(meeting);
        return;
    }
}

void NaiveSchedule::offer(const NaiveMeeting &meeting)
{
    std::optional<QString> previous;
    if (m_onScreen) {
        if (m_onScreen->start >= meeting.start) {
            say(u"refused"_s, meeting.id);
            return;
        }
        if (m_onScreen->end > m_now)
            previous = m_onScreen->id;
    }
    m_onScreen = meeting;
    sayShown(meeting.id, previous);
    markShown(meeting);
}

void NaiveSchedule::markShown(const NaiveMeeting &meeting)
{
    putNote(m_mind.shown, meeting.key, meeting.end);
    m_disk.shown = stored(m_mind.shown);
    removeNote(m_mind.snoozed, meeting.key);
    m_disk.snoozed = stored(m_mind.snoozed);
}

void NaiveSchedule::setPausedUntil(std::optional<double> date)
{
    m_mind.pausedUntil = date;
    m_disk.pausedUntil = date ? std::optional(stored(*date)) : std::nullopt;
}

bool NaiveSchedule::isOn(const NaiveCalendar &calendar) const
{
    for (const Choice &choice : m_choices) {
        if (choice.key == calendar.key)
            return choice.on;
    }
    for (const Choice &choice : m_choices) {
        if (choice.key == calendar.googleID)
            return choice.on;
    }
    return calendar.selected || calendar.primary;
}

bool NaiveSchedule::isListed(const NaiveMeeting &meeting) const
{
    if (m_onlyWithVideo && !meeting.hasLink)
        return false;
    for (const NaiveCalendar &calendar : m_calendars) {
        if (calendar.key == meeting.calendar && isOn(calendar))
            return true;
    }
    return false;
}

bool NaiveSchedule::isCandidate(const NaiveMeeting &meeting) const
{
    if (findNote(m_mind.shown, meeting.key))
        return false;
    if (m_now >= meeting.end)
        return false;
    if (findNote(m_mind.snoozed, meeting.key))
        return true;
    return m_now <= meeting.start + lateCutoff;
}

double NaiveSchedule::showTime(const NaiveMeeting &meeting) const
{
    const double base = meeting.start - m_leadMinutes * 60;
    const Note *snoozed = findNote(m_mind.snoozed, meeting.key);
    return snoozed ? std::max(base, snoozed->date) : base;
}

void NaiveSchedule::say(const QString &event, const QString &id)
{
    write({{u"at"_s, m_now}, {u"event"_s, event}, {u"id"_s, id}});
}

void NaiveSchedule::sayShown(const QString &id, const std::optional<QString> &previous)
{
    write({{u"at"_s, m_now},
           {u"event"_s, u"shown"_s},
           {u"id"_s, id},
           {u"previous"_s, previous ? QJsonValue(*previous) : QJsonValue(QJsonValue::Null)}});
}

void NaiveSchedule::write(const QJsonObject &line)
{
    m_lines << QJsonDocument(line).toJson(QJsonDocument::Compact);
}

} // namespace

QList<QByteArray> runNaiveSchedule(const QJsonObject &scenario)
{
    return NaiveSchedule(scenario).run();
}

} // namespace kelp::test
