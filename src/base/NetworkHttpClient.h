#pragma once

#include "base/HttpClient.h"

#include <QNetworkAccessManager>

namespace kelp {

class Clock;

/// HttpClient on Qt's network stack, with the rules that Qt leaves to its users: redirects are not followed (Qt
/// would send the credentials along to another origin), the whole answer has to be there within 60 s (Qt's own time-out
/// starts again with each byte), bodies end at 8 MiB, an unverified server is an error, nothing is cached, no cookies.
/// The desktop's proxy is used, but never for this computer itself.
class NetworkHttpClient final : public HttpClient
{
public:
    static constexpr double deadline = 60;                 ///< seconds, for the whole exchange
    static constexpr qint64 largestBody = 8 * 1024 * 1024; ///< bytes, after decompression

    explicit NetworkHttpClient(Clock &clock);

    void send(const HttpRequest &request, QObject *context, Callback callback) override;

private:
    Clock &m_clock;
    QNetworkAccessManager m_manager;
};

} // namespace kelp
