#include "auth/SignInAttempt.h"

#include "auth/Pkce.h"
#include "base/HttpClient.h"
#include "base/Json.h"
#include "base/Uri.h"
#include "platform/UrlOpener.h"

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// Read-only access to calendars. https://developers.google.com/identity/protocols/oauth2/scopes#calendar
const QString scope = u"https://www.googleapis.com/auth/calendar.readonly"_s;

} // namespace

SignInAttempt::SignInAttempt(Services services, GoogleEndpoints endpoints, QString clientID, QString clientSecret,
                             QObject *parent)
    : QObject(parent),
      m_services(services),
      m_endpoints(std::move(endpoints)),
      m_clientID(std::move(clientID)),
      m_clientSecret(std::move(clientSecret)),
      m_verifier(randomURLSafe(32)),
      m_state(randomURLSafe(16)),
      m_server(services.clock, m_state)
{
}

void SignInAttempt::start()
{
    const auto redirectUri = m_server.start();
    if (!redirectUri) {
        Q_EMIT failed(redirectUri.error());
        return;
    }
    m_redirectUri = *redirectUri;
    const QString page = consentUrl();
    if (!m_services.opener.hasHandler(page.section(u':', 0, 0))) {
        Q_EMIT failed(AuthError::fromServer(u"No web browser is set up to open Google's sign-in page."_s));
        return;
    }
    m_server.waitForCode(this, [this](const LoopbackServer::Outcome &code) { exchangeCode(code); });
    m_services.opener.open(page);
}

QString SignInAttempt::consentUrl() const
{
    const QList<std::pair<QByteArray, QString>> items{
        {"client_id", m_clientID},
        {"redirect_uri", m_redirectUri},
        {"response_type", u"code"_s},
        {"scope", scope},
        {"code_challenge", codeChallenge(m_verifier)},
        {"code_challenge_method", u"S256"_s},
        {"state", m_state},
        {"access_type", u"offline"_s},
        {"prompt", u"consent select_account"_s},
    };
    QByteArray url = m_endpoints.authorization.toUtf8();
    for (qsizetype i = 0; i < items.size(); ++i)
        url += (i == 0 ? '?' : '&') + items[i].first + '=' + percentEncoded(items[i].second);
    return QString::fromUtf8(url);
}

void SignInAttempt::exchangeCode(const LoopbackServer::Outcome &code)
{
    if (!code) {
        Q_EMIT failed(code.error());
        return;
    }
    m_services.tokenEndpoint.request({{"code", *code},
                                      {"client_id", m_clientID},
                                      {"client_secret", m_clientSecret},
                                      {"redirect_uri", m_redirectUri},
                                      {"grant_type", u"authorization_code"_s},
                                      {"code_verifier", m_verifier}},
                                     this,
                                     [this](const Result<QJsonObject, AuthError> &answer) { takeTokens(answer); });
}

void SignInAttempt::takeTokens(const Result<QJsonObject, AuthError> &answer)
{
    if (!answer) {
        Q_EMIT failed(answer.error());
        return;
    }
    const QJsonValue refreshToken = answer->value("refresh_token"_L1);
    if (!refreshToken.isString()) {
        Q_EMIT failed(AuthError::fromServer(u"Google did not return a refresh token."_s));
        return;
    }
    m_outcome.account = {u"Google account"_s, refreshToken.toString()};
    m_outcome.accessToken = answer->value("access_token"_L1).toString();
    m_outcome.lifetime = lifetimeOf(*answer);
    findEmail();
}

void SignInAttempt::findEmail()
{
    // The primary calendar's identifier is the account's address. Any other answer leaves the stand-in name, which
    // the first refresh repairs.
    const auto take = [this](const Result<HttpResponse, HttpError> &response) {
        if (!response) {
            Q_EMIT failed(AuthError::fromTransport(response.error().description(), response.error().isTransient()));
            return;
        }
        const auto json = parseJson(response->body);
        const QJsonValue id = json ? json->toObject().value("id"_L1) : QJsonValue();
        m_outcome.account.email = id.toString(m_outcome.account.email);
        Q_EMIT finished(m_outcome);
    };
    m_services.http.send({.method = "GET",
                          .url = QUrl(m_endpoints.api + u"/calendars/primary"_s, QUrl::StrictMode),
                          .headers = {{"Authorization", "Bearer " + m_outcome.accessToken.toUtf8()}},
                          .body = {}},
                         this, take);
}

} // namespace kelp
