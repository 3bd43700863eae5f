#pragma once

#include "Answer.h"
#include "Request.h"
#include "RequestLog.h"
#include "State.h"
#include "base/Clock.h"

#include <mutex>

namespace kelp::sandbox {

/// The stand-in for Google as such: requests in, answers out, no socket anywhere.
///
///     request ─ control? ─ fault that replaces the answer? ─ endpoint ─ fault that spoils the answer? ─ log ─ answer
class Sandbox
{
public:
    Sandbox(const Seed &seed, const Clock &clock) : m_state(State::fromSeed(seed)), m_clock(clock) {}

    /// Call it before the first request.
    [[nodiscard]] RequestLog &log() { return m_log; }

    /// From any thread.
    [[nodiscard]] Answer answer(const Request &request);

private:
    [[nodiscard]] static QString endpointName(const Request &request);
    [[nodiscard]] Answer trueAnswer(const QString &endpoint, const Request &request);
    [[nodiscard]] Answer faultyAnswer(const QString &endpoint, const Request &request);

    std::mutex m_mutex;
    State m_state;
    RequestLog m_log;
    const Clock &m_clock;
};

} // namespace kelp::sandbox
