#pragma once

#include "Answer.h"
#include "Request.h"
#include "RequestLog.h"
#include "State.h"

namespace kelp::sandbox {

/// What tests and people steer the sandbox with:
///
///     GET, POST, DELETE /sandbox/faults        list, add one (or a list), clear
///     POST              /sandbox/revoke        {"email"}: all tokens of the account end
///     POST              /sandbox/expire        all access tokens end
///     POST              /sandbox/events        {"account", "calendar", "events"}: replaces a calendar's events
///     GET, DELETE       /sandbox/requests      what was asked so far, these endpoints left out; forget it
///
/// Successes answer 200 with a JSON value, mistakes 400 with {"error": "…"}.
class ControlEndpoints
{
public:
    ControlEndpoints(State &state, RequestLog &log, Instant now) : m_state(state), m_log(log), m_now(now) {}

    [[nodiscard]] Answer answer(const Request &request);

private:
    [[nodiscard]] Answer faults(const Request &request);
    [[nodiscard]] Answer revoke(const Request &request);
    [[nodiscard]] Answer replaceEvents(const Request &request);
    [[nodiscard]] Answer requests(const Request &request);

    State &m_state;
    RequestLog &m_log;
    Instant m_now;
};

} // namespace kelp::sandbox
