#pragma once

#include "Answer.h"
#include "Request.h"
#include "State.h"

namespace kelp::sandbox {

/// POST /token: exchanges a code, or a refresh token, for an access token.
class TokenEndpoint
{
public:
    TokenEndpoint(State &state, Instant now) : m_state(state), m_now(now) {}

    [[nodiscard]] Answer answer(const Request &request);

private:
    [[nodiscard]] Answer exchange(const Parameters &form);
    [[nodiscard]] Answer refresh(const Parameters &form);
    [[nodiscard]] QJsonObject accessToken(const QString &email, const QString &scope);

    State &m_state;
    Instant m_now;
};

} // namespace kelp::sandbox
