#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace kelp {

// The records of the Google Calendar v3 interface that Kelp reads, with only the members it uses. Members are named
// as on the wire. A member that is missing or null is absent.
// https://developers.google.com/calendar/api/v3/reference/events and …/calendarList

/// One event.
struct GEvent
{
    /// A start or an end.
    struct When
    {
        std::optional<QString> dateTime; ///< RFC 3339 instant with offset
        std::optional<QString> date;     ///< all-day date, yyyy-mm-dd
    };
    struct EntryPoint
    {
        std::optional<QString> entryPointType; ///< "video" marks the video call
        std::optional<QString> uri;
    };
    struct Conference
    {
        std::optional<QList<EntryPoint>> entryPoints;
    };
    struct Attendee
    {
        std::optional<QString> email;
        std::optional<QString> responseStatus;
        std::optional<bool> isSelf; ///< "self" on the wire
        std::optional<bool> resource;
    };

    std::optional<QString> id;
    std::optional<QString> iCalUID;
    std::optional<QString> status;
    std::optional<QString> summary;
    std::optional<QString> description;
    std::optional<QString> location;
    std::optional<When> start;
    std::optional<When> end;
    std::optional<QString> transparency;
    std::optional<QString> eventType;
    std::optional<QString> hangoutLink;
    std::optional<Conference> conferenceData;
    std::optional<QList<Attendee>> attendees;
};

/// The body of an answer with events.
struct GEventList
{
    std::optional<QList<GEvent>> items;
};

/// The body of an answer with calendars.
struct GCalendarList
{
    struct Entry
    {
        QString id; ///< required
        std::optional<QString> summary;
        std::optional<QString> summaryOverride; ///< the user's own name for a shared calendar
        std::optional<bool> selected;
        std::optional<bool> primary;
        std::optional<QString> backgroundColor; ///< "#rrggbb"
    };

    std::optional<QList<Entry>> items;
};

/// A body that is no JSON or not of the expected form.
struct DecodingError
{
    QString message; ///< names the member: "items[3].start.dateTime: expected a string"

    [[nodiscard]] QString description() const { return message; }
};

/// Decodes a whole body; a listed member of the wrong type anywhere fails all of it.
[[nodiscard]] Result<GEventList, DecodingError> decodeEventList(const QByteArray &body);
[[nodiscard]] Result<GCalendarList, DecodingError> decodeCalendarList(const QByteArray &body);

} // namespace kelp
