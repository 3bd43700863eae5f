#pragma once

#include "auth/AccountSource.h"
#include "auth/AccountStore.h"
#include "auth/GoogleEndpoints.h"
#include "auth/TokenEndpoint.h"
#include "base/Instant.h"

#include <QHash>
#include <QObject>
#include <QPointer>

#include <functional>
#include <optional>

namespace kelp {

class Clock;
class HttpClient;
class Preferences;
class SignInAttempt;
class UrlOpener;

/// Owns the user's Google accounts and their access tokens.
///
/// Signing in is the OAuth 2.0 authorization-code flow for installed applications with PKCE (RFC 8252, RFC 7636): see
/// SignInAttempt. Access tokens live in memory only; refresh tokens in the account file.
class GoogleAuth final : public QObject, public AccountSource
{
    Q_OBJECT

public:
    /// The OAuth client that was built in; empty members where none was.
    struct Client
    {
        QString id;
        QString secret;

        [[nodiscard]] bool isComplete() const { return !id.isEmpty() && !secret.isEmpty(); }
    };
    struct Services
    {
        Preferences &preferences;
        HttpClient &http;
        Clock &clock;
        UrlOpener &opener;
    };
    using SignInCallback = std::function<void(Result<Account, AuthError>)>;

    /// Accounts are kept in `folder` and loaded at once.
    GoogleAuth(Services services, GoogleEndpoints endpoints, Client builtIn, const QString &folder,
               QObject *parent = nullptr);
    ~GoogleAuth() override;

    [[nodiscard]] const QList<Account> &accounts() const override { return m_accounts; }
    /// The first account's address.
    [[nodiscard]] std::optional<QString> email() const;
    [[nodiscard]] bool isSigningIn() const { return !m_attempt.isNull(); }
    /// Whether the OAuth client came with the program, so that the user need not enter one.
    [[nodiscard]] bool hasBuiltInClient() const { return m_builtIn.isComplete(); }

    /// Adds an account through the browser. An attempt that still waits for its redirect is cancelled. Calls back once,
    /// unless `context` is destroyed before.
    void signIn(QObject *context, SignInCallback callback);
    void signOut(const Account &account);

    void validAccessToken(const Account &account, bool forceRefresh, QObject *context, TokenCallback callback) override;
    void rename(const Account &account, const QString &email) override;

Q_SIGNALS:
    void accountsChanged();
    void isSigningInChanged();

private:
    struct AccessToken
    {
        QString token;
        Instant expiry;
    };

    [[nodiscard]] Client client() const;
    void finishAttempt(SignInAttempt *attempt);
    void addAccount(const Account &account, const AccessToken &token);
    void removeAccounts(QString email);
    void saveAccounts();
    [[nodiscard]] Result<QString, AuthError> takeRefreshed(const Account &account,
                                                           const Result<QJsonObject, AuthError> &answer);
    [[nodiscard]] AuthError revoked(const Account &account);

    Services m_services;
    GoogleEndpoints m_endpoints;
    Client m_builtIn;
    AccountStore m_store;
    TokenEndpoint m_tokenEndpoint;
    QList<Account> m_accounts;
    QHash<QString, AccessToken> m_accessTokens; ///< by e-mail
    QPointer<SignInAttempt> m_attempt;          ///< the newest, while it runs
};

} // namespace kelp
