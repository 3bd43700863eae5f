#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <utility>

namespace kelp::test {

/// One request to a server on 127.0.0.1, over a connection of its own, and whatever came back, exactly: nothing is
/// followed, repeated, unpacked or cached. Blocks, without an event loop.
struct HttpExchange
{
    using Header = std::pair<QByteArray, QByteArray>;

    int status = 0;        ///< 0 where no whole head came
    QList<Header> headers; ///< names in lower case
    QByteArray body;
    bool isWhole = false;  ///< as long as its Content-Length says
    bool wasReset = false; ///< the connection was reset, or there was none

    /// Host, Content-Length and "Connection: close" are added. Gives up after 10 s without a byte.
    [[nodiscard]] static HttpExchange send(const QByteArray &method, const QUrl &url, const QList<Header> &headers = {},
                                           const QByteArray &body = {});

    /// The same with the bytes of the whole request.
    [[nodiscard]] static HttpExchange sendRaw(const QUrl &server, const QByteArray &request);

    /// The same with a server that leaves the connection open: reads no further than Content-Length says. Gives up
    /// after 60 s without a byte.
    [[nodiscard]] static HttpExchange ask(const QByteArray &method, const QUrl &url, const QList<Header> &headers = {},
                                          const QByteArray &body = {});

    /// The first header of that name (in lower case), or nothing.
    [[nodiscard]] QByteArray header(const QByteArray &name) const;

private:
    [[nodiscard]] static HttpExchange parse(const QByteArray &answer);
};

/// The bytes of such a request.
[[nodiscard]] QByteArray httpRequest(const QByteArray &method, const QUrl &url,
                                     const QList<HttpExchange::Header> &headers = {}, const QByteArray &body = {});

} // namespace kelp::test
