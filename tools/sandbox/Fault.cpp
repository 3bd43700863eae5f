#include "Fault.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QList>

#include <utility>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

using Kind = Fault::Kind;

/// Over the 8 MiB that a client may be expected to read.
constexpr qsizetype tooLargeSize = 9 * 1024 * 1024;

const QList<std::pair<QString, Kind>> &kinds()
{
    static const QList<std::pair<QString, Kind>> table{
        {u"unauthorizedOnce"_s, Kind::unauthorizedOnce},
        {u"forbidden"_s, Kind::forbidden},
        {u"serverErrorHtml"_s, Kind::serverErrorHtml},
        {u"htmlWith200"_s, Kind::htmlWith200},
        {u"redirect"_s, Kind::redirect},
        {u"hang"_s, Kind::hang},
        {u"invalidJson"_s, Kind::invalidJson},
        {u"wrongTypes"_s, Kind::wrongTypes},
        {u"tooLarge"_s, Kind::tooLarge},
        {u"noRefreshToken"_s, Kind::noRefreshToken},
        {u"slowDrip"_s, Kind::slowDrip},
        {u"reset"_s, Kind::reset},
    };
    return table;
}

QString errorPage()
{
    return u"<!DOCTYPE html>\n<html lang=\"en\">\n<head><meta charset=\"utf-8\"><title>Error 500 (Server Error)</title>"
           "<style>*{margin:0;padding:0}html{background:#fff;color:#222;padding:15px}body{margin:7% auto "
           "0;max-width:390px}"
           "</style></head>\n<body><p><b>500.</b> <ins>That\u2019s an error.</ins></p>"
           "<p>The server encountered an error and could not complete your request.</p>"
           "<p>If the problem persists, please report your problem and mention this error message and the query that "
           "caused it. <ins>That\u2019s all we know.</ins></p></body></html>\n"_s;
}

void spoilMembers(QJsonObject &object)
{
    for (const QString &name : {u"id"_s, u"iCalUID"_s, u"summary"_s, u"access_token"_s, u"refresh_token"_s}) {
        if (object.contains(name))
            object[name] = 42;
    }
    if (object.contains(u"expires_in"_s))
        object[u"expires_in"_s] = u"soon"_s;
}

QJsonObject withWrongTypes(QJsonObject object)
{
    if (!object.contains(u"items"_s)) {
        spoilMembers(object);
        return object;
    }
    QJsonArray items = object[u"items"_s].toArray();
    if (items.isEmpty()) {
        object[u"items"_s] = u"none"_s;
        return object;
    }
    QJsonObject first = items.first().toObject();
    spoilMembers(first);
    items.replace(0, first);
    object[u"items"_s] = items;
    return object;
}

} // namespace

Result<Fault, QString> Fault::parse(const QJsonObject &json)
{
    static const QStringList endpoints{u"*"_s,       u"authorization"_s, u"token"_s,
                                       u"primary"_s, u"calendarList"_s,  u"events"_s};
    Fault fault;
    fault.m_at = json[u"at"_s].toString(u"*"_s);
    if (!endpoints.contains(fault.m_at))
        return Failure(u"\"at\" is one of "_s + endpoints.join(u", "_s));
    const QString name = json[u"kind"_s].toString();
    QStringList names;
    for (const auto &[known, kind] : kinds()) {
        names.append(known);
        if (known == name)
            fault.m_kind = kind;
    }
    if (!names.contains(name))
        return Failure(u"\"kind\" is one of "_s + names.join(u", "_s));
    if (const auto read = fault.readDetails(json); !read)
        return Failure(read.error());
    return fault;
}

Result<void, QString> Fault::readDetails(const QJsonObject &json)
{
    const QJsonValue times = json[u"times"_s];
    if (!times.isUndefined() && times.toInt() < 1)
        return Failure(u"\"times\" is a number of requests, at least 1"_s);
    if (!times.isUndefined())
        m_times = times.toInt();
    else if (m_kind == Kind::unauthorizedOnce)
        m_times = 1;
    m_interval = json[u"interval"_s].toDouble(1);
    if (m_interval < 0.001 || m_interval > 3600)
        return Failure(u"\"interval\" is a number of seconds from 0.001 to 3600"_s);
    m_location = json[u"location"_s].toString().toUtf8();
    m_port = json[u"port"_s].toInt();
    // Nothing may break out of the header.
    const bool isPrintable =
        std::all_of(m_location.begin(), m_location.end(), [](char c) { return c > ' ' && c < 127; });
    if (m_kind == Kind::redirect && ((m_location.isEmpty() && (m_port < 1 || m_port > 65535)) || !isPrintable))
        return Failure(u"a redirect needs a \"location\" in ASCII or a \"port\""_s);
    return {};
}

QJsonObject Fault::toJson() const
{
    QJsonObject json{{u"at"_s, m_at}};
    for (const auto &[name, kind] : kinds()) {
        if (kind == m_kind)
            json[u"kind"_s] = name;
    }
    if (m_times)
        json[u"times"_s] = *m_times;
    if (!m_location.isEmpty())
        json[u"location"_s] = QString::fromUtf8(m_location);
    if (m_port != 0)
        json[u"port"_s] = m_port;
    if (m_kind == Kind::slowDrip)
        json[u"interval"_s] = m_interval;
    return json;
}

bool Fault::concerns(const QString &endpoint) const
{
    // The page is for a person at a browser: it goes wrong only when asked to.
    return m_at == endpoint || (m_at == u"*" && endpoint != u"authorization");
}

bool Fault::canSpoil(const Answer &answer) const
{
    if (answer.status != 200)
        return false;
    return m_kind != Kind::noRefreshToken || QJsonDocument::fromJson(answer.body).object().contains(u"refresh_token"_s);
}

bool Fault::consume()
{
    if (m_times)
        --*m_times;
    return m_times == 0;
}

Answer Fault::replacement(const QString &endpoint, const QByteArray &target) const
{
    const bool isOauth = endpoint == u"token";
    switch (m_kind) {
    case Kind::unauthorizedOnce:
        return isOauth ? Answer::oauthError(401, u"invalid_client"_s, u"Unauthorized"_s)
                       : Answer::apiError(401, u"authError"_s, u"Invalid Credentials"_s);
    case Kind::forbidden:
        return isOauth ? Answer::oauthError(403, u"rate_limit_exceeded"_s, u"Rate Limit Exceeded"_s)
                       : Answer::apiError(403, u"rateLimitExceeded"_s, u"Rate Limit Exceeded"_s);
    case Kind::htmlWith200:
        return Answer::html(200, errorPage());
    case Kind::redirect:
        return Answer::redirect(m_location.isEmpty() ? "http://127.0.0.1:" + QByteArray::number(m_port) + target
                                                     : m_location);
    case Kind::hang: {
        Answer answer;
        answer.status = 0;
        answer.delivery = Answer::Delivery::hang;
        return answer;
    }
    default:
        return Answer::html(500, errorPage());
    }
}

Answer Fault::spoiled(Answer answer) const
{
    QJsonObject object = QJsonDocument::fromJson(answer.body).object();
    switch (m_kind) {
    case Kind::invalidJson:
        answer.body.truncate(answer.body.size() / 2);
        break;
    case Kind::wrongTypes:
        answer.body = QJsonDocument(withWrongTypes(std::move(object))).toJson();
        break;
    case Kind::tooLarge:
        object[u"padding"_s] = QString(tooLargeSize, u'x');
        answer.body = QJsonDocument(object).toJson();
        break;
    case Kind::noRefreshToken:
        object.remove(u"refresh_token"_s);
        answer.body = QJsonDocument(object).toJson();
        break;
    case Kind::slowDrip:
        answer.delivery = Answer::Delivery::drip;
        answer.dripInterval = m_interval;
        break;
    case Kind::reset:
        answer.delivery = Answer::Delivery::reset;
        break;
    default:
        break;
    }
    return answer;
}

} // namespace kelp::sandbox
