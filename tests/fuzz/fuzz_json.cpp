#include "base/Json.h"
#include "calendar/CalendarError.h"
#include "calendar/Meeting.h"
#include "calendar/WireRecords.h"
#include "fuzz/FuzzTarget.h"
#include "platform/UrlOpener.h"

#include <QUrl>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

void checkMeeting(const GEvent &event)
{
    const std::optional<Meeting> meeting = Meeting::fromEvent(event, u"Team"_s, u"ada@example.com|team"_s);
    if (!meeting)
        return;
    FUZZ_EXPECT(event.status != "cancelled"_L1 && event.transparency != "transparent"_L1);
    FUZZ_EXPECT(event.start && event.start->dateTime && event.end && event.end->dateTime);
    FUZZ_EXPECT(!meeting->title.isEmpty());
    const QString ending = u'|' + shortestDecimal(meeting->start.secondsSince1970);
    FUZZ_EXPECT(meeting->id.endsWith(ending));
    if (event.iCalUID || event.id)
        FUZZ_EXPECT(meeting->id == (event.iCalUID ? *event.iCalUID : *event.id) + ending);
    FUZZ_EXPECT(meeting->attendeeCount >= 0);
    FUZZ_EXPECT(meeting->attendeeCount <= (event.attendees ? event.attendees->size() : 0));
    FUZZ_EXPECT(meeting->calendarName == u"Team"_s && meeting->calendarID == u"ada@example.com|team"_s);
    if (meeting->joinURL)
        FUZZ_EXPECT(MeetingLink::fromText(meeting->joinURL->text()) == meeting->joinURL);
    FUZZ_EXPECT(!meeting->canJoin() || isOpenable(meeting->joinURL->text()));
    FUZZ_EXPECT(!meeting->provider() || meeting->joinURL);
}

/// What is refused is refused with a reason, and only JSON objects are taken.
template<typename List>
void checkOutcome(const Result<List, DecodingError> &list, const Result<QJsonValue, JsonError> &json)
{
    if (list)
        FUZZ_EXPECT(json && json->isObject());
    else
        FUZZ_EXPECT(!list.error().description().isEmpty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray body = test::inputBytes(data, size);
    const auto json = parseJson(body);
    FUZZ_EXPECT(json || !json.error().description().isEmpty());

    const auto events = decodeEventList(body);
    checkOutcome(events, json);
    if (events && events->items) {
        for (const GEvent &event : *events->items)
            checkMeeting(event);
    }
    checkOutcome(decodeCalendarList(body), json);

    const QString description = CalendarError{403, body}.description();
    FUZZ_EXPECT(description.startsWith("Google Calendar error 403: "_L1));
    return 0;
}
