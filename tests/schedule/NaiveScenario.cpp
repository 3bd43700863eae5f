#include "schedule/NaiveScenario.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>

#include <cmath>

namespace kelp::test {

using namespace Qt::StringLiterals;

std::optional<double> readDate(const QJsonValue &value)
{
    const QDateTime date = QDateTime::fromString(value["date"_L1].toString(), Qt::ISODateWithMs);
    if (!date.isValid())
        return {};
    return static_cast<double>(date.toMSecsSinceEpoch()) / 1000;
}

std::vector<Note> readNotes(const QJsonValue &value)
{
    std::vector<Note> notes;
    const QJsonObject object = value.toObject();
    for (const QString &key : object.keys()) {
        const std::optional<double> date = readDate(object.value(key));
        if (!date)
            return {};
        notes.push_back({key, *date});
    }
    return notes;
}

std::vector<Choice> readChoices(const QJsonValue &value)
{
    std::vector<Choice> choices;
    const QJsonObject object = value.toObject();
    for (const QString &key : object.keys()) {
        if (!object.value(key).isBool())
            return {};
        choices.push_back({key, object.value(key).toBool()});
    }
    return choices;
}

std::vector<NaiveMeeting> readMeetings(const QJsonValue &value)
{
    std::vector<NaiveMeeting> meetings;
    for (const QJsonValue &item : value.toArray()) {
        NaiveMeeting meeting;
        meeting.id = item["id"_L1].toString();
        meeting.start = item["start"_L1].toDouble();
        meeting.end = item["end"_L1].toDouble();
        meeting.hasLink = item["joinURL"_L1].isString();
        meeting.calendar = item["calendarID"_L1].toString();
        meeting.key = meeting.id + u"@"_s + QString::number(static_cast<qint64>(std::trunc(meeting.start)));
        meetings.push_back(meeting);
    }
    return meetings;
}

std::vector<NaiveCalendar> readCalendars(const QJsonValue &value)
{
    std::vector<NaiveCalendar> calendars;
    for (const QJsonValue &item : value.toArray()) {
        NaiveCalendar calendar;
        calendar.googleID = item["googleID"_L1].toString();
        calendar.key = item["accountEmail"_L1].toString() + u"|"_s + calendar.googleID;
        calendar.primary = item["isPrimary"_L1].toBool();
        calendar.selected = item["googleSelected"_L1].toBool();
        calendars.push_back(calendar);
    }
    return calendars;
}

double readInteger(const QJsonValue &value, double absent)
{
    return value.isUndefined() ? absent : std::trunc(value.toDouble(0));
}

} // namespace kelp::test
