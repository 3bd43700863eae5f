#include "AuthorizationEndpoint.h"

#include "ConsentPage.h"

#include <QRegularExpression>
#include <QUrl>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

const QString calendarScope = u"https://www.googleapis.com/auth/calendar.readonly"_s;

/// A client on a desktop listens at a port of its own on the loopback address.
bool isLoopbackUri(const QString &text)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(u"http://127\\.0\\.0\\.1:([0-9]{1,5})(/[!-~]*)?"_s));
    const QRegularExpressionMatch match = pattern.match(text);
    const int port = match.captured(1).toInt();
    return match.hasMatch() && port >= 1 && port <= 65535 && !text.contains(u'#') &&
           QUrl(text, QUrl::StrictMode).isValid();
}

bool areScopes(const QStringList &scopes)
{
    static const QStringList plain{u"openid"_s, u"email"_s, u"profile"_s};
    return std::all_of(scopes.begin(), scopes.end(), [](const QString &scope) {
        return plain.contains(scope) || scope.startsWith(u"https://www.googleapis.com/auth/");
    });
}

/// SHA-256 has 32 bytes, which are 43 characters of base64url.
bool isChallenge(const QString &text)
{
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(u"[A-Za-z0-9_-]{43}"_s));
    return pattern.match(text).hasMatch();
}

QByteArray encoded(const QString &value)
{
    return QUrl::toPercentEncoding(value);
}

QByteArray withQuery(const QString &uri, const QByteArray &query)
{
    return uri.toUtf8() + (uri.contains(u'?') ? '&' : '?') + query;
}

} // namespace

Answer AuthorizationEndpoint::show(const Request &request) const
{
    if (const auto refused = refusal(request.query))
        return refuse(*refused);
    QStringList emails;
    for (const SeedAccount &account : m_state.seed.accounts)
        emails.append(account.email);
    return Answer::html(200, consentPage(emails, request.query.value(u"login_hint"_s), request.rawQuery));
}

Answer AuthorizationEndpoint::decide(const Request &request)
{
    const std::optional<Parameters> form = request.hasForm() ? Parameters::decode(request.body) : std::nullopt;
    const std::optional<Parameters> query =
        form ? Parameters::decode(form->value(u"request"_s).toUtf8()) : std::nullopt;
    if (!query)
        return refuse({u"invalid_request"_s, u"The form is malformed."_s});
    if (const auto refused = refusal(*query))
        return refuse(*refused);
    const QString redirectUri = query->value(u"redirect_uri"_s);
    const QByteArray state = encoded(query->value(u"state"_s));
    const QString decision = form->value(u"decision"_s);
    if (decision == u"cancel")
        return Answer::redirect(withQuery(redirectUri, "error=access_denied&state=" + state));
    const QString email = form->value(u"account"_s);
    if (decision != u"allow" || m_state.account(email) == nullptr)
        return refuse({u"invalid_request"_s, u"Choose an account, then allow or cancel."_s});
    const QString scope = query->value(u"scope"_s);
    const CodeGrant grant{email, redirectUri, query->value(u"code_challenge"_s), scope,
                          query->value(u"access_type"_s) == u"offline"};
    const QString code = m_state.grants.issueCode(grant, m_now);
    return Answer::redirect(withQuery(redirectUri, "state=" + state + "&code=" + encoded(code) +
                                                       "&scope=" + encoded(scope) + "&authuser=0&prompt=consent"));
}

std::optional<AuthorizationEndpoint::Refusal> AuthorizationEndpoint::refusal(const Parameters &query) const
{
    if (const auto name = query.repeatedName())
        return Refusal{u"invalid_request"_s, u"OAuth 2 parameters can only have a single value: "_s + *name};
    for (const QString &name : {u"client_id"_s, u"redirect_uri"_s, u"response_type"_s, u"scope"_s, u"state"_s}) {
        if (query.value(name).isEmpty())
            return Refusal{u"invalid_request"_s, u"Missing required parameter: "_s + name};
    }
    if (query.value(u"client_id"_s) != m_state.seed.clientId)
        return Refusal{u"invalid_client"_s, u"The OAuth client was not found."_s};
    if (!isLoopbackUri(query.value(u"redirect_uri"_s)))
        return Refusal{u"redirect_uri_mismatch"_s, u"The redirect URI is not http://127.0.0.1:port."_s};
    if (query.value(u"response_type"_s) != u"code")
        return Refusal{u"unsupported_response_type"_s, u"Invalid response_type: "_s + query.value(u"response_type"_s)};
    const QStringList scopes = query.value(u"scope"_s).split(u' ', Qt::SkipEmptyParts);
    if (!scopes.contains(calendarScope) || !areScopes(scopes))
        return Refusal{u"invalid_scope"_s, u"Some requested scopes were invalid: "_s + query.value(u"scope"_s)};
    return refusedOptions(query);
}

std::optional<AuthorizationEndpoint::Refusal> AuthorizationEndpoint::refusedOptions(const Parameters &query) const
{
    if (query.value(u"code_challenge_method"_s) != u"S256" || !isChallenge(query.value(u"code_challenge"_s)))
        return Refusal{u"invalid_request"_s, u"A code_challenge of method S256 is required."_s};
    const QString access = query.find(u"access_type"_s).value_or(u"online"_s);
    if (access != u"online" && access != u"offline")
        return Refusal{u"invalid_request"_s, u"Invalid parameter value for access_type: "_s + access};
    for (const QString &prompt : query.value(u"prompt"_s).split(u' ', Qt::SkipEmptyParts)) {
        if (prompt == u"none")
            return Refusal{u"interaction_required"_s, u"There is nobody signed in."_s};
        if (prompt != u"consent" && prompt != u"select_account")
            return Refusal{u"invalid_request"_s, u"Invalid parameter value for prompt: "_s + prompt};
    }
    return std::nullopt;
}

Answer AuthorizationEndpoint::refuse(const Refusal &refusal)
{
    return Answer::html(400, authorizationErrorPage(refusal.error, refusal.description));
}

} // namespace kelp::sandbox
