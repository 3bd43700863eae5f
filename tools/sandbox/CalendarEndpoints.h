#pragma once

#include "Answer.h"
#include "Request.h"
#include "State.h"

namespace kelp::sandbox {

/// What there is below /calendar/v3, to be read with an access token:
///
///     GET /calendar/v3/users/me/calendarList
///     GET /calendar/v3/calendars/{id}
///     GET /calendar/v3/calendars/{id}/events
class CalendarEndpoints
{
public:
    CalendarEndpoints(State &state, Instant now) : m_state(state), m_now(now) {}

    /// The endpoint's name ("calendarList", "primary" for a calendar by itself, "events"), or nothing where the path is
    /// none of the above.
    [[nodiscard]] static QString name(const QStringList &segments);

    /// `request` is for a path that has a name.
    [[nodiscard]] Answer answer(const Request &request) const;

private:
    [[nodiscard]] SeedAccount *authorizedAccount(const Request &request) const;
    [[nodiscard]] Answer calendarList(const SeedAccount &account, const Parameters &query) const;
    [[nodiscard]] Answer events(const SeedAccount &account, const SeedCalendar &calendar,
                                const Parameters &query) const;

    State &m_state;
    Instant m_now;
};

} // namespace kelp::sandbox
