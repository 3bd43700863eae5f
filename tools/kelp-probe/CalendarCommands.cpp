#include "Commands.h"
#include "Streams.h"

#include "calendar/Meeting.h"
#include "calendar/WireRecords.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kelp::probe {

namespace {

QJsonValue orNull(const std::optional<QString> &text)
{
    return text ? QJsonValue(*text) : QJsonValue();
}

QJsonValue describe(const std::optional<Meeting> &meeting)
{
    if (!meeting)
        return {};
    const auto application = meeting->joinURL ? meeting->joinURL->applicationLink() : std::nullopt;
    return QJsonObject{
        {u"id"_s, meeting->id},
        {u"title"_s, meeting->title},
        {u"start"_s, meeting->start.secondsSince1970},
        {u"end"_s, meeting->end.secondsSince1970},
        {u"joinURL"_s, meeting->joinURL ? QJsonValue(meeting->joinURL->text()) : QJsonValue()},
        {u"attendeeCount"_s, static_cast<qint64>(meeting->attendeeCount)},
        {u"calendarName"_s, meeting->calendarName},
        {u"calendarID"_s, meeting->calendarID},
        {u"provider"_s, orNull(meeting->provider())},
        {u"appURL"_s, orNull(application)},
    };
}

template<typename List>
void writeOutcome(const Result<List, DecodingError> &list)
{
    const QJsonObject outcome = list ? QJsonObject{{u"ok"_s, true}, {u"count"_s, list->items ? list->items->size() : 0}}
                                     : QJsonObject{{u"ok"_s, false}, {u"error"_s, list.error().description()}};
    writeLine(QJsonDocument(outcome).toJson(QJsonDocument::Compact));
}

} // namespace

int meetingsCommand(const QStringList &arguments)
{
    if (!arguments.isEmpty() && arguments.size() != 2)
        return badUsage;
    const auto list = decodeEventList(readInput());
    if (!list)
        return complain(list.error().description());
    QJsonArray meetings;
    for (const GEvent &event : list->items.value_or(QList<GEvent>()))
        meetings.append(describe(Meeting::fromEvent(event, arguments.value(0), arguments.value(1))));
    writeLine(QJsonDocument(meetings).toJson(QJsonDocument::Compact));
    return ran;
}

int decodeCommand(const QStringList &arguments)
{
    if (arguments == QStringList{u"events"_s})
        writeOutcome(decodeEventList(readInput()));
    else if (arguments == QStringList{u"calendars"_s})
        writeOutcome(decodeCalendarList(readInput()));
    else
        return badUsage;
    return ran;
}

} // namespace kelp::probe
