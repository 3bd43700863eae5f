#include "TokenEndpoint.h"

#include <QCryptographicHash>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

Answer missing(const QString &name)
{
    return Answer::oauthError(400, u"invalid_request"_s, u"Missing required parameter: "_s + name);
}

/// RFC 7636, section 4.6.
QString challenge(const QString &verifier)
{
    const QByteArray digest = QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(digest.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

} // namespace

Answer TokenEndpoint::answer(const Request &request)
{
    if (request.method != "POST")
        return Answer::notFound();
    const std::optional<Parameters> form = request.hasForm() ? Parameters::decode(request.body) : std::nullopt;
    if (!form)
        return Answer::oauthError(400, u"invalid_request"_s, u"The body is no url-encoded form."_s);
    if (const auto name = form->repeatedName())
        return Answer::oauthError(400, u"invalid_request"_s, u"Parameter is repeated: "_s + *name);
    const QString grant = form->value(u"grant_type"_s);
    if (grant.isEmpty())
        return missing(u"grant_type"_s);
    if (grant != u"authorization_code" && grant != u"refresh_token")
        return Answer::oauthError(400, u"unsupported_grant_type"_s, u"Invalid grant_type: "_s + grant);
    if (form->value(u"client_id"_s).isEmpty())
        return Answer::oauthError(400, u"invalid_request"_s, u"Could not determine client ID from request."_s);
    if (form->value(u"client_id"_s) != m_state.seed.clientId)
        return Answer::oauthError(401, u"invalid_client"_s, u"The OAuth client was not found."_s);
    if (form->value(u"client_secret"_s).isEmpty())
        return Answer::oauthError(400, u"invalid_request"_s, u"client_secret is missing."_s);
    if (form->value(u"client_secret"_s) != m_state.seed.clientSecret)
        return Answer::oauthError(401, u"invalid_client"_s, u"The provided client secret is invalid."_s);
    return grant == u"refresh_token" ? refresh(*form) : exchange(*form);
}

Answer TokenEndpoint::exchange(const Parameters &form)
{
    for (const QString &name : {u"code"_s, u"redirect_uri"_s}) {
        if (form.value(name).isEmpty())
            return missing(name);
    }
    const std::optional<CodeGrant> grant = m_state.grants.takeCode(form.value(u"code"_s), m_now);
    if (!grant)
        return Answer::oauthError(400, u"invalid_grant"_s, u"Malformed auth code."_s);
    if (form.value(u"redirect_uri"_s) != grant->redirectUri)
        return Answer::oauthError(400, u"redirect_uri_mismatch"_s, u"Bad Request"_s);
    const QString verifier = form.value(u"code_verifier"_s);
    if (verifier.isEmpty())
        return Answer::oauthError(400, u"invalid_grant"_s, u"Missing code verifier."_s);
    if (challenge(verifier) != grant->challenge)
        return Answer::oauthError(400, u"invalid_grant"_s, u"Invalid code verifier."_s);
    QJsonObject tokens = accessToken(grant->email, grant->scope);
    if (grant->isOffline)
        tokens[u"refresh_token"_s] = m_state.grants.issueRefreshToken(grant->email);
    return Answer::json(200, tokens);
}

Answer TokenEndpoint::refresh(const Parameters &form)
{
    if (form.value(u"refresh_token"_s).isEmpty())
        return missing(u"refresh_token"_s);
    const std::optional<QString> email = m_state.grants.accountOfRefreshToken(form.value(u"refresh_token"_s));
    if (!email)
        return Answer::oauthError(400, u"invalid_grant"_s, u"Token has been expired or revoked."_s);
    return Answer::json(200, accessToken(*email, u"https://www.googleapis.com/auth/calendar.readonly"_s));
}

QJsonObject TokenEndpoint::accessToken(const QString &email, const QString &scope)
{
    return {{u"access_token"_s, m_state.grants.issueAccessToken(email, m_now)},
            {u"expires_in"_s, Grants::tokenLifetime},
            {u"scope"_s, scope},
            {u"token_type"_s, u"Bearer"_s}};
}

} // namespace kelp::sandbox
