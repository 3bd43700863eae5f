#include "calendar/Meeting.h"

#include "calendar/WireRecords.h"
#include "platform/UrlOpener.h"

#include <QUuid>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// Kinds of event that are no meetings.
constexpr std::array otherEventTypes{"workingLocation"_L1, "outOfOffice"_L1, "focusTime"_L1, "birthday"_L1};

std::optional<Instant> instantOf(const std::optional<GEvent::When> &when)
{
    return when && when->dateTime ? Instant::parse(*when->dateTime) : std::nullopt;
}

bool isDeclined(const GEvent &event)
{
    if (!event.attendees)
        return false;
    const auto self = std::find_if(event.attendees->begin(), event.attendees->end(),
                                   [](const GEvent::Attendee &each) { return each.isSelf == true; });
    return self != event.attendees->end() && self->responseStatus == "declined"_L1;
}

/// Whether the user wants no reminder of the event, whenever it is.
bool isNoMeeting(const GEvent &event)
{
    const QString type = event.eventType.value_or(QString());
    return event.status == "cancelled"_L1 || event.transparency == "transparent"_L1 ||
           std::find(otherEventTypes.begin(), otherEventTypes.end(), type) != otherEventTypes.end();
}

std::optional<QString> videoEntryPoint(const GEvent &event)
{
    if (!event.conferenceData || !event.conferenceData->entryPoints)
        return {};
    const QList<GEvent::EntryPoint> &points = *event.conferenceData->entryPoints;
    const auto video = std::find_if(points.begin(), points.end(),
                                    [](const GEvent::EntryPoint &each) { return each.entryPointType == "video"_L1; });
    return video == points.end() ? std::nullopt : video->uri;
}

std::optional<QString> linkInTexts(const GEvent &event)
{
    QStringList texts;
    for (const std::optional<QString> &text : {event.location, event.description}) {
        if (text)
            texts.append(*text);
    }
    return findMeetingLink(texts.join(u' ').replace("&amp;"_L1, "&"_L1));
}

std::optional<MeetingLink> linkOf(const GEvent &event)
{
    std::optional<QString> text = event.hangoutLink;
    if (!text)
        text = videoEntryPoint(event);
    if (!text)
        text = linkInTexts(event);
    return text ? MeetingLink::fromText(*text) : std::nullopt;
}

QString identifierOf(const GEvent &event)
{
    if (event.iCalUID)
        return *event.iCalUID;
    return event.id ? *event.id : QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

std::int64_t countPeople(const GEvent &event)
{
    if (!event.attendees)
        return 0;
    return std::count_if(event.attendees->begin(), event.attendees->end(),
                         [](const GEvent::Attendee &each) { return each.resource != true; });
}

} // namespace

std::optional<Meeting> Meeting::fromEvent(const GEvent &event, const QString &calendarName, const QString &calendarID)
{
    // An event with a date instead of an instant is an all-day event: no start, no meeting.
    const std::optional<Instant> start = instantOf(event.start);
    const std::optional<Instant> end = instantOf(event.end);
    if (isNoMeeting(event) || !start || !end || isDeclined(event))
        return {};

    const QString summary = event.summary.value_or(QString());
    return Meeting{.id = identifierOf(event) + u'|' + shortestDecimal(start->secondsSince1970),
                   .title = summary.isEmpty() ? u"(No title)"_s : summary,
                   .start = *start,
                   .end = *end,
                   .joinURL = linkOf(event),
                   .attendeeCount = countPeople(event),
                   .calendarName = calendarName,
                   .calendarID = calendarID};
}

std::optional<QString> Meeting::provider() const
{
    return joinURL ? joinURL->provider() : std::nullopt;
}

bool Meeting::canJoin() const
{
    return joinURL && joinURL->isWebLink();
}

void Meeting::join(UrlOpener &opener) const
{
    if (!canJoin())
        return;
    const std::optional<QString> application = joinURL->applicationLink();
    opener.open(application && opener.hasHandler(u"zoommtg"_s) ? *application : joinURL->text());
}

} // namespace kelp
