#include "auth/GoogleAuth.h"

#include "auth/SignInAttempt.h"
#include "base/Clock.h"
#include "preferences/Preferences.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double refreshAhead = 60; ///< seconds before its expiry a token counts as expired

} // namespace

GoogleAuth::GoogleAuth(Services services, GoogleEndpoints endpoints, Client builtIn, const QString &folder,
                       QObject *parent)
    : QObject(parent),
      m_services(services),
      m_endpoints(std::move(endpoints)),
      m_builtIn(std::move(builtIn)),
      m_store(folder, services.preferences),
      m_tokenEndpoint(services.http, m_endpoints.token),
      m_accounts(m_store.load())
{
}

GoogleAuth::~GoogleAuth() = default;

std::optional<QString> GoogleAuth::email() const
{
    return m_accounts.isEmpty() ? std::nullopt : std::optional(m_accounts.first().email);
}

GoogleAuth::Client GoogleAuth::client() const
{
    const auto setting = [this](const QString &builtIn, const PreferenceKey<QString> &key) {
        return (builtIn.isEmpty() ? m_services.preferences.get(key) : builtIn).trimmed();
    };
    return {setting(m_builtIn.id, preference::clientID), setting(m_builtIn.secret, preference::clientSecret)};
}

void GoogleAuth::signIn(QObject *context, SignInCallback callback)
{
    const Client oauthClient = client();
    if (!oauthClient.isComplete()) {
        callback(Failure(AuthError{.kind = AuthError::Kind::missingClient}));
        return;
    }
    if (m_attempt)
        m_attempt->stop();
    auto *attempt = new SignInAttempt({m_services.http, m_services.clock, m_services.opener, m_tokenEndpoint},
                                      m_endpoints, oauthClient.id, oauthClient.secret, this);
    m_attempt = attempt;
    Q_EMIT isSigningInChanged();

    const QPointer<QObject> guard(context);
    connect(attempt, &SignInAttempt::failed, this, [=, this](const AuthError &error) {
        finishAttempt(attempt);
        if (guard)
            callback(Failure(error));
    });
    connect(attempt, &SignInAttempt::finished, this, [=, this](const SignInAttempt::Outcome &outcome) {
        addAccount(outcome.account, {outcome.accessToken, m_services.clock.now() + outcome.lifetime});
        finishAttempt(attempt);
        if (guard)
            callback(outcome.account);
    });
    attempt->start();
}

void GoogleAuth::finishAttempt(SignInAttempt *attempt)
{
    attempt->deleteLater();
    // An attempt that a newer one cancelled leaves the flag alone.
    if (m_attempt != attempt)
        return;
    m_attempt = nullptr;
    Q_EMIT isSigningInChanged();
}

void GoogleAuth::addAccount(const Account &account, const AccessToken &token)
{
    m_accounts.removeIf([&](const Account &each) { return each.email == account.email; });
    m_accounts.append(account);
    m_accessTokens.insert(account.email, token);
    saveAccounts();
}

void GoogleAuth::signOut(const Account &account)
{
    removeAccounts(account.email);
}

// By value: the caller's string may be that of an account that goes.
void GoogleAuth::removeAccounts(QString email)
{
    m_accounts.removeIf([&](const Account &each) { return each.email == email; });
    m_accessTokens.remove(email);
    saveAccounts();
}

void GoogleAuth::rename(const Account &account, const QString &email)
{
    const QString oldEmail = account.email; // `account` may be the listed one itself
    if (email == oldEmail)
        return;
    const auto listed =
        std::find_if(m_accounts.begin(), m_accounts.end(), [&](const Account &each) { return each.email == oldEmail; });
    if (listed == m_accounts.end())
        return;
    listed->email = email;
    if (m_accessTokens.contains(oldEmail))
        m_accessTokens.insert(email, m_accessTokens.take(oldEmail));
    saveAccounts();
}

void GoogleAuth::saveAccounts()
{
    m_store.save(m_accounts);
    Q_EMIT accountsChanged();
}

void GoogleAuth::validAccessToken(const Account &account, bool forceRefresh, QObject *context, TokenCallback callback)
{
    const auto cached = m_accessTokens.constFind(account.email);
    if (!forceRefresh && cached != m_accessTokens.constEnd() &&
        cached->expiry - m_services.clock.now() > refreshAhead) {
        callback(cached->token);
        return;
    }
    const Client oauthClient = client();
    if (!oauthClient.isComplete()) {
        callback(Failure(AuthError{.kind = AuthError::Kind::missingClient}));
        return;
    }
    const QPointer<QObject> guard(context);
    m_tokenEndpoint.request({{"refresh_token", account.refreshToken},
                             {"client_id", oauthClient.id},
                             {"client_secret", oauthClient.secret},
                             {"grant_type", u"refresh_token"_s}},
                            this, [=, this](const Result<QJsonObject, AuthError> &answer) {
                                const auto token = takeRefreshed(account, answer);
                                if (guard)
                                    callback(token);
                            });
}

Result<QString, AuthError> GoogleAuth::takeRefreshed(const Account &account,
                                                     const Result<QJsonObject, AuthError> &answer)
{
    if (!answer) {
        const AuthError &error = answer.error();
        const bool isRevoked = error.kind == AuthError::Kind::server && error.message.contains("invalid_grant"_L1);
        return Failure(isRevoked ? revoked(account) : error);
    }
    const QString token = answer->value("access_token"_L1).toString();
    m_accessTokens.insert(account.email, {token, m_services.clock.now() + lifetimeOf(*answer)});
    return token;
}

AuthError GoogleAuth::revoked(const Account &account)
{
    // The user may have signed in again while this answer was on its way; the new token is not the one refused.
    const bool isListed = m_accounts.contains(account);
    if (isListed)
        removeAccounts(account.email);
    return AuthError::fromServer(account.email + u" was signed out by Google. Add it again."_s);
}

} // namespace kelp
