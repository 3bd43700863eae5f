#pragma once

#include "Answer.h"
#include "Request.h"
#include "State.h"

namespace kelp::sandbox {

/// Where the browser is sent to. GET shows the consent page, whose form is posted to the same path with the request it
/// answers:
///
///     GET  /o/oauth2/v2/auth?client_id=…      200 consent page, or 400 error page
///     POST /o/oauth2/v2/consent               302 to the client with a code, or with error=access_denied
class AuthorizationEndpoint
{
public:
    AuthorizationEndpoint(State &state, Instant now) : m_state(state), m_now(now) {}

    [[nodiscard]] Answer show(const Request &request) const;
    [[nodiscard]] Answer decide(const Request &request);

private:
    struct Refusal
    {
        QString error; ///< "invalid_request", …
        QString description;
    };
    [[nodiscard]] std::optional<Refusal> refusal(const Parameters &query) const;
    [[nodiscard]] std::optional<Refusal> refusedOptions(const Parameters &query) const;
    [[nodiscard]] static Answer refuse(const Refusal &refusal);

    State &m_state;
    Instant m_now;
};

} // namespace kelp::sandbox
