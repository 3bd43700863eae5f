#pragma once

#include "calendar/CalendarInfo.h"
#include "calendar/Meeting.h"

#include <QList>
#include <QStringList>

#include <functional>

class QObject;

namespace kelp {

/// What one refresh over all accounts brought.
struct FetchResult
{
    QList<CalendarInfo> calendars;   ///< in account order, each account's primary calendar first, then by name
    QList<Meeting> meetings;         ///< by start, ascending; each once
    QStringList errors;              ///< a line per account that failed
    bool errorsAreTransient = false; ///< there are errors, and all of them may well be gone in a few seconds
};

/// Where meetings come from.
class MeetingSource
{
public:
    using CalendarFilter = std::function<bool(const CalendarInfo &)>;
    using Callback = std::function<void(FetchResult)>;

    virtual ~MeetingSource() = default;

    /// Reads all calendars, and the events of those that `isEnabled` allows, from an hour ago to `hours` ahead. Never
    /// fails as a whole. Calls back once, unless `context` is destroyed before; perhaps before this function returns,
    /// as it does without accounts.
    virtual void fetch(double hours, CalendarFilter isEnabled, QObject *context, Callback callback) = 0;
};

} // namespace kelp
