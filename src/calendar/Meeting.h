#pragma once

#include "base/Instant.h"
#include "calendar/MeetingLink.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace kelp {

class UrlOpener;
struct GEvent;

/// One occurrence of a meeting.
struct Meeting
{
    QString id;    ///< stable key of this occurrence; holds its start, so a moved meeting is another one
    QString title; ///< never empty
    Instant start;
    Instant end; ///< not necessarily after the start
    std::optional<MeetingLink> joinURL;
    std::int64_t attendeeCount = 0; ///< people, the user included; rooms and equipment left out
    QString calendarName;
    QString calendarID; ///< the calendar's key: account e-mail, "|", Google's identifier

    friend bool operator==(const Meeting &, const Meeting &) = default;

    /// The meeting that `event` stands for, or nothing where it is none for the user: cancelled, free time, out of
    /// office and the like, all-day, declined, or without a readable start and end.
    [[nodiscard]] static std::optional<Meeting> fromEvent(const GEvent &event, const QString &calendarName,
                                                          const QString &calendarID);

    /// The display name of the video-call provider, or nothing where there is no link or it is none we know.
    [[nodiscard]] std::optional<QString> provider() const;
    /// Whether there is a link that may be opened. A link of a scheme that Kelp does not hand to the desktop counts as
    /// none.
    [[nodiscard]] bool canJoin() const;
    /// Opens the link, in the provider's own application where one is installed. Does nothing where `canJoin` is false.
    void join(UrlOpener &opener) const;
};

} // namespace kelp
