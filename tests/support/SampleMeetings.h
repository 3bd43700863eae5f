#pragma once

#include "calendar/Meeting.h"

namespace kelp::sample {

/// Thursday, 2026-01-01 10:00 UTC.
inline constexpr Instant ten{1767261600};

/// "Weekly design review" from 10:00 to 10:30 with five people, to be joined on Google Meet.
[[nodiscard]] inline Meeting designReview()
{
    return {.id = QStringLiteral("review|1767261600.0"),
            .title = QStringLiteral("Weekly design review"),
            .start = ten,
            .end = ten + 1800,
            .joinURL = MeetingLink::fromText(QStringLiteral("https://meet.google.com/abc-defg-hij")),
            .attendeeCount = 5,
            .calendarName = QStringLiteral("Work"),
            .calendarID = QStringLiteral("ada@example.com|work")};
}

/// "Budget planning with the regional offices", still running at ten.
[[nodiscard]] inline Meeting budgetPlanning()
{
    return {.id = QStringLiteral("budget|1767258000.0"),
            .title = QStringLiteral("Budget planning with the regional offices"),
            .start = ten - 3600,
            .end = ten + 900,
            .joinURL = MeetingLink::fromText(QStringLiteral("https://example.zoom.us/j/123456")),
            .attendeeCount = 3,
            .calendarName = QStringLiteral("Work"),
            .calendarID = QStringLiteral("ada@example.com|work")};
}

[[nodiscard]] inline Meeting withoutLink(Meeting meeting)
{
    meeting.joinURL.reset();
    return meeting;
}

[[nodiscard]] inline Meeting titled(Meeting meeting, const QString &title)
{
    meeting.title = title;
    return meeting;
}

} // namespace kelp::sample
