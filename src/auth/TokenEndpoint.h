#pragma once

#include "auth/AuthError.h"
#include "base/Result.h"

#include <QJsonObject>
#include <QList>

#include <functional>
#include <utility>

class QObject;

namespace kelp {

class HttpClient;

/// Calls to Google's OAuth 2.0 token endpoint.
class TokenEndpoint
{
public:
    using Fields = QList<std::pair<QByteArray, QString>>;
    /// An object with "access_token".
    using Callback = std::function<void(Result<QJsonObject, AuthError>)>;

    TokenEndpoint(HttpClient &http, QString url);

    /// Posts the form; calls back once, unless `context` is destroyed before.
    void request(const Fields &fields, QObject *context, Callback callback);

private:
    HttpClient &m_http;
    QString m_url;
};

/// Seconds for which the access token of an answer is good; an hour where it does not say.
[[nodiscard]] double lifetimeOf(const QJsonObject &answer);

} // namespace kelp
