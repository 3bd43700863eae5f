#include "base/NetworkHttpClient.h"

#include "base/Clock.h"

#include <QHostAddress>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

QNetworkRequest networkRequest(const HttpRequest &request)
{
    QNetworkRequest result(request.url);
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    result.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    result.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    result.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    // One connection would carry all requests, and an aborted one leaves it open: after a change of network each retry
    // would wait for an answer on the dead connection, for as long as retries come sooner than Qt gives it up (120 s).
    result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    for (const auto &[name, value] : request.headers)
        result.setRawHeader(name, value);
    return result;
}

/// Qt reports error statuses as errors, too. True where an HTTP answer arrived whole.
bool isAnswer(QNetworkReply::NetworkError error)
{
    const bool clientError = error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError;
    const bool serverError = error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError;
    // Statuses 400 and 418 have codes among the protocol errors.
    return error == QNetworkReply::NoError || clientError || serverError ||
           error == QNetworkReply::ProtocolInvalidOperationError;
}

/// One exchange; a child of its reply.
class Exchange : public QObject
{
public:
    Exchange(QNetworkReply *reply, QObject *context, HttpClient::Callback callback)
        : QObject(reply), m_reply(reply), m_context(context), m_callback(std::move(callback))
    {
        connect(reply, &QNetworkReply::readyRead, this, &Exchange::collect);
        connect(reply, &QNetworkReply::finished, this, &Exchange::finish);
        // Nobody waits for the answer any more.
        connect(context, &QObject::destroyed, reply, &QNetworkReply::abort);
    }

    void fail(HttpError::Kind kind, const QString &message)
    {
        if (!m_failure)
            m_failure = HttpError{kind, message};
        m_reply->abort();
    }

private:
    void collect()
    {
        m_body += m_reply->readAll();
        if (m_body.size() > NetworkHttpClient::largestBody)
            fail(HttpError::Kind::tooLarge, u"The server's answer is too large."_s);
    }

    void finish()
    {
        if (!m_failure)
            m_body += m_reply->readAll();
        m_reply->deleteLater();
        if (m_context)
            m_callback(outcome());
    }

    [[nodiscard]] Result<HttpResponse, HttpError> outcome() const
    {
        if (m_failure)
            return Failure(*m_failure);
        if (m_body.size() > NetworkHttpClient::largestBody)
            return Failure(HttpError{HttpError::Kind::tooLarge, u"The server's answer is too large."_s});
        const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        if (status > 0 && isAnswer(m_reply->error()))
            return HttpResponse{status, m_body};
        const bool insecure = m_reply->error() == QNetworkReply::SslHandshakeFailedError;
        return Failure(HttpError{insecure ? HttpError::Kind::insecure : HttpError::Kind::transport,
                                 m_reply->error() == QNetworkReply::NoError ? u"The server gave no answer."_s
                                                                            : m_reply->errorString()});
    }

    QNetworkReply *m_reply;
    QPointer<QObject> m_context;
    HttpClient::Callback m_callback;
    QByteArray m_body;
    std::optional<HttpError> m_failure;
};

/// The desktop's proxies, but a server on this computer is reached directly: what is meant for it must not leave.
class ProxyFactory final : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery &query) override
    {
        const QString host = query.peerHostName();
        if (host == "localhost"_L1 || QHostAddress(host).isLoopback())
            return {QNetworkProxy::NoProxy};
        return systemProxyForQuery(query);
    }
};

} // namespace

NetworkHttpClient::NetworkHttpClient(Clock &clock) : m_clock(clock)
{
    m_manager.setProxyFactory(new ProxyFactory); // the manager takes it over
}

void NetworkHttpClient::send(const HttpRequest &request, QObject *context, Callback callback)
{
    const QNetworkRequest networked = networkRequest(request);
    QNetworkReply *reply =
        request.method == "POST" ? m_manager.post(networked, request.body) : m_manager.get(networked);
    auto *exchange = new Exchange(reply, context, std::move(callback));
    m_clock.after(deadline, exchange,
                  [exchange] { exchange->fail(HttpError::Kind::timedOut, u"The server took too long to answer."_s); });
}

} // namespace kelp
