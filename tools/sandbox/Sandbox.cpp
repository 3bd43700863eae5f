#include "Sandbox.h"

#include "AuthorizationEndpoint.h"
#include "CalendarEndpoints.h"
#include "ControlEndpoints.h"
#include "TokenEndpoint.h"

#include <algorithm>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

Answer Sandbox::answer(const Request &request)
{
    const std::lock_guard lock(m_mutex);
    if (request.segments.value(0) == u"sandbox")
        return ControlEndpoints(m_state, m_log, m_clock.now()).answer(request);
    const Answer answer = faultyAnswer(endpointName(request), request);
    m_log.add(request, answer.status, m_clock.now());
    return answer;
}

/// The name by which faults call it; empty where there is no such place.
QString Sandbox::endpointName(const Request &request)
{
    if (request.path == "/o/oauth2/v2/auth" || request.path == "/o/oauth2/v2/consent")
        return u"authorization"_s;
    if (request.path == "/token")
        return u"token"_s;
    return CalendarEndpoints::name(request.segments);
}

Answer Sandbox::trueAnswer(const QString &endpoint, const Request &request)
{
    if (!request.isWellFormed)
        return Answer::html(400, u"<!DOCTYPE html><title>Error 400 (Bad Request)</title><p>Your client has issued a "
                                 "malformed or illegal request.</p>\n"_s);
    const Instant now = m_clock.now();
    if (endpoint == u"token")
        return TokenEndpoint(m_state, now).answer(request);
    if (endpoint == u"authorization") {
        const bool isPage = request.path == "/o/oauth2/v2/auth";
        if (request.method != (isPage ? "GET" : "POST"))
            return Answer::notFound();
        AuthorizationEndpoint authorization(m_state, now);
        return isPage ? authorization.show(request) : authorization.decide(request);
    }
    return endpoint.isEmpty() ? Answer::notFound() : CalendarEndpoints(m_state, now).answer(request);
}

Answer Sandbox::faultyAnswer(const QString &endpoint, const Request &request)
{
    QList<Fault> &faults = m_state.seed.faults;
    const auto fault = std::find_if(faults.begin(), faults.end(),
                                    [&](const Fault &candidate) { return candidate.concerns(endpoint); });
    if (endpoint.isEmpty() || fault == faults.end())
        return trueAnswer(endpoint, request);
    Answer answer;
    if (fault->replacesAnswer()) {
        const QByteArray target = request.rawQuery.isEmpty() ? request.path : request.path + '?' + request.rawQuery;
        answer = fault->replacement(endpoint, target);
    } else {
        answer = trueAnswer(endpoint, request);
        if (!fault->canSpoil(answer))
            return answer;
        answer = fault->spoiled(answer);
    }
    if (fault->consume())
        faults.erase(fault);
    return answer;
}

} // namespace kelp::sandbox
