#include "ControlEndpoints.h"

#include <QJsonDocument>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

Answer done()
{
    return Answer::json(200, {});
}

Answer mistake(const QString &text)
{
    return Answer::json(400, {{u"error"_s, text}});
}

Answer list(const QJsonArray &array)
{
    Answer answer = Answer::json(200, {});
    answer.body = QJsonDocument(array).toJson();
    return answer;
}

} // namespace

Answer ControlEndpoints::answer(const Request &request)
{
    const QString name = request.segments.mid(1).join(u'/');
    if (name == u"faults")
        return faults(request);
    if (name == u"requests")
        return requests(request);
    if (request.method == "POST" && name == u"revoke")
        return revoke(request);
    if (request.method == "POST" && name == u"events")
        return replaceEvents(request);
    if (request.method == "POST" && name == u"expire") {
        m_state.grants.expireAccessTokens();
        return done();
    }
    return Answer::notFound();
}

Answer ControlEndpoints::faults(const Request &request)
{
    if (request.method == "GET") {
        QJsonArray array;
        for (const Fault &fault : m_state.seed.faults)
            array.append(fault.toJson());
        return list(array);
    }
    if (request.method == "DELETE") {
        m_state.seed.faults.clear();
        return done();
    }
    if (request.method != "POST")
        return Answer::notFound();
    const QJsonDocument document = QJsonDocument::fromJson(request.body);
    const auto parsed = parseFaults(document.isArray() ? document.array() : QJsonArray{document.object()});
    if (!parsed)
        return mistake(parsed.error());
    m_state.seed.faults += *parsed;
    return done();
}

Answer ControlEndpoints::revoke(const Request &request)
{
    const QString email = QJsonDocument::fromJson(request.body)[u"email"_s].toString();
    if (m_state.account(email) == nullptr)
        return mistake(u"\"email\" is no account"_s);
    m_state.grants.revoke(email);
    return done();
}

Answer ControlEndpoints::replaceEvents(const Request &request)
{
    const QJsonObject object = QJsonDocument::fromJson(request.body).object();
    SeedAccount *account = m_state.account(object[u"account"_s].toString());
    SeedCalendar *calendar = account != nullptr ? account->calendar(object[u"calendar"_s].toString()) : nullptr;
    if (calendar == nullptr)
        return mistake(u"\"account\" and \"calendar\" are no calendar"_s);
    if (!object[u"events"_s].isArray())
        return mistake(u"\"events\" is no array"_s);
    const auto events = calendar->parseEvents(object[u"events"_s].toArray(), m_now);
    if (!events)
        return mistake(events.error());
    calendar->events = *events;
    return done();
}

Answer ControlEndpoints::requests(const Request &request)
{
    if (request.method == "GET")
        return list(m_log.entries());
    if (request.method != "DELETE")
        return Answer::notFound();
    m_log.clear();
    return done();
}

} // namespace kelp::sandbox
