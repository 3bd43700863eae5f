#include "auth/TokenEndpoint.h"

#include "base/HttpClient.h"
#include "base/Json.h"
#include "base/Uri.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

QByteArray formBody(const TokenEndpoint::Fields &fields)
{
    QByteArrayList pairs;
    for (const auto &[name, value] : fields)
        pairs.append(name + '=' + percentEncoded(value));
    return pairs.join('&');
}

Result<QJsonObject, AuthError> read(const Result<HttpResponse, HttpError> &response)
{
    if (!response)
        return Failure(AuthError::fromTransport(response.error().description(), response.error().isTransient()));
    const bool transient = response->status >= 500 && response->status <= 599;
    const auto json = parseJson(response->body);
    if (!json)
        return Failure(AuthError::fromTransport(json.error().description(), transient));
    const QJsonObject object = json->toObject();
    if (response->status == 200 && object.contains("access_token"_L1))
        return object;
    return Failure(AuthError::fromServer(u"Google sign-in failed: "_s +
                                             object.value("error"_L1).toString(u"unknown_error"_s) + u' ' +
                                             object.value("error_description"_L1).toString(),
                                         transient));
}

} // namespace

TokenEndpoint::TokenEndpoint(HttpClient &http, QString url) : m_http(http), m_url(std::move(url)) {}

void TokenEndpoint::request(const Fields &fields, QObject *context, Callback callback)
{
    m_http.send({.method = "POST",
                 .url = QUrl(m_url, QUrl::StrictMode),
                 .headers = {{"Content-Type", "application/x-www-form-urlencoded"}},
                 .body = formBody(fields)},
                context, [callback = std::move(callback)](const Result<HttpResponse, HttpError> &response) {
                    callback(read(response));
                });
}

double lifetimeOf(const QJsonObject &answer)
{
    return answer.value("expires_in"_L1).toDouble(3600);
}

} // namespace kelp
