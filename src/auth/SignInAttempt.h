#pragma once

#include "auth/Account.h"
#include "auth/GoogleEndpoints.h"
#include "auth/LoopbackServer.h"
#include "auth/TokenEndpoint.h"

#include <QObject>

namespace kelp {

class Clock;
class HttpClient;
class UrlOpener;

/// One run through the authorization-code flow:
///
///     start → consent page in the browser → (redirect) → exchangeCode → (POST token) → takeTokens
///           → findEmail → (GET primary calendar) → finished
///
/// A failure on the way ends it with `failed`.
class SignInAttempt : public QObject
{
    Q_OBJECT

public:
    struct Services
    {
        HttpClient &http;
        Clock &clock;
        UrlOpener &opener;
        TokenEndpoint &tokenEndpoint;
    };
    struct Outcome
    {
        Account account;
        QString accessToken;
        double lifetime = 0; ///< seconds for which the access token is good
    };

    SignInAttempt(Services services, GoogleEndpoints endpoints, QString clientID, QString clientSecret,
                  QObject *parent);

    void start();
    /// Cancels where the redirect has not come yet; a later step runs to its end.
    void stop() { m_server.stop(); }

Q_SIGNALS:
    void finished(const kelp::SignInAttempt::Outcome &outcome);
    void failed(const kelp::AuthError &error);

private:
    [[nodiscard]] QString consentUrl() const;
    void exchangeCode(const LoopbackServer::Outcome &code);
    void takeTokens(const Result<QJsonObject, AuthError> &answer);
    void findEmail();

    Services m_services;
    GoogleEndpoints m_endpoints;
    QString m_clientID;
    QString m_clientSecret;
    QString m_verifier;
    QString m_state;
    LoopbackServer m_server;
    QString m_redirectUri;
    Outcome m_outcome;
};

} // namespace kelp
