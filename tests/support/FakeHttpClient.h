#pragma once

#include "base/HttpClient.h"

#include <QList>
#include <QObject>
#include <QPointer>

namespace kelp::test {

/// An HTTP client whose answers a test gives by hand, and that remembers what was sent.
class FakeHttpClient final : public HttpClient
{
public:
    void send(const HttpRequest &request, QObject *context, Callback callback) override
    {
        m_sent.append(request);
        m_open.append({context, std::move(callback)});
    }

    /// Everything that was sent so far.
    [[nodiscard]] const QList<HttpRequest> &sent() const { return m_sent; }
    /// How many requests wait for an answer.
    [[nodiscard]] qsizetype open() const { return m_open.size(); }

    /// Answers the oldest open request.
    void answer(const Result<HttpResponse, HttpError> &outcome)
    {
        const Open open = m_open.takeFirst();
        if (open.context)
            open.callback(outcome);
    }
    void answer(int status, const QByteArray &body) { answer(HttpResponse{status, body}); }
    void fail(HttpError::Kind kind, const QString &message) { answer(Failure(HttpError{kind, message})); }

private:
    struct Open
    {
        QPointer<QObject> context;
        Callback callback;
    };

    QList<HttpRequest> m_sent;
    QList<Open> m_open;
};

} // namespace kelp::test
