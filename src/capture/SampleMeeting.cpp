#include "capture/SampleMeeting.h"

using namespace Qt::StringLiterals;

namespace kelp {

Meeting sampleMeeting(const QString &id, Instant start)
{
    return {.id = id,
            .title = u"Weekly design review"_s,
            .start = start,
            .end = start + 1800,
            .joinURL = MeetingLink::fromText(u"https://meet.google.com"_s),
            .attendeeCount = 5,
            .calendarName = u"Design"_s,
            .calendarID = {}};
}

} // namespace kelp
