#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <utility>

class QObject;

namespace kelp {

struct HttpRequest
{
    QByteArray method; ///< "GET" or "POST"
    QUrl url;
    QList<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body; ///< sent with POST only

    friend bool operator==(const HttpRequest &, const HttpRequest &) = default;
};

struct HttpResponse
{
    int status = 0;
    QByteArray body;

    friend bool operator==(const HttpResponse &, const HttpResponse &) = default;
};

/// No answer, or none that may be used. Answers with an error status are responses.
struct HttpError
{
    enum class Kind {
        transport, ///< no connection, or it broke before the answer was whole
        insecure,  ///< the server's identity could not be verified
        timedOut,  ///< the answer was not whole within 60 s
        tooLarge,  ///< the body is over 8 MiB
    };
    Kind kind = Kind::transport;
    QString message;

    [[nodiscard]] QString description() const { return message; }
    /// Whether the same request may well succeed in a few seconds.
    [[nodiscard]] bool isTransient() const { return kind == Kind::transport || kind == Kind::timedOut; }
    friend bool operator==(const HttpError &, const HttpError &) = default;
};

/// Sends requests without blocking.
class HttpClient
{
public:
    using Callback = std::function<void(Result<HttpResponse, HttpError>)>;

    virtual ~HttpClient() = default;

    /// Sends `request`; calls back on this thread, once, never before this function has returned, and not at all once
    /// `context` is destroyed.
    virtual void send(const HttpRequest &request, QObject *context, Callback callback) = 0;
};

} // namespace kelp
