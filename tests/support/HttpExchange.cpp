#include "HttpExchange.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>

namespace kelp::test {

namespace {

/// Sends `request` to the port of 127.0.0.1 and reads until the other side closes or `isEnough`, waiting no longer than
/// `patience` seconds for a byte. Returns false where there is no connection or where it is reset, which a QTcpSocket
/// does not tell from a proper end.
bool transfer(int port, const QByteArray &request, int patience, QByteArray &answer,
              const std::function<bool()> &isEnough)
{
    const int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const timeval timeLimit{patience, 0};
    ::setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &timeLimit, sizeof timeLimit);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<quint16>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bool isProper = ::connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
                    ::send(connection, request.constData(), static_cast<std::size_t>(request.size()), MSG_NOSIGNAL) ==
                        request.size();
    std::array<char, 65536> buffer{};
    ssize_t size = isProper ? 1 : 0;
    while (size > 0 && !isEnough()) {
        size = ::recv(connection, buffer.data(), buffer.size(), 0);
        answer.append(buffer.data(), std::max<ssize_t>(size, 0));
    }
    isProper = isProper && (size == 0 || errno != ECONNRESET);
    ::close(connection);
    return isProper;
}

} // namespace

QByteArray httpRequest(const QByteArray &method, const QUrl &url, const QList<HttpExchange::Header> &headers,
                       const QByteArray &body)
{
    QByteArray target = url.path(QUrl::FullyEncoded).toLatin1();
    if (target.isEmpty())
        target = "/";
    if (url.hasQuery())
        target += '?' + url.query(QUrl::FullyEncoded).toLatin1();
    QByteArray text =
        method + ' ' + target + " HTTP/1.1\r\nHost: " + url.authority().toLatin1() + "\r\nConnection: close\r\n";
    for (const auto &[name, value] : headers)
        text += name + ": " + value + "\r\n";
    if (!body.isEmpty() || method == "POST")
        text += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    return text + "\r\n" + body;
}

HttpExchange HttpExchange::send(const QByteArray &method, const QUrl &url, const QList<Header> &headers,
                                const QByteArray &body)
{
    return sendRaw(url, httpRequest(method, url, headers, body));
}

HttpExchange HttpExchange::sendRaw(const QUrl &server, const QByteArray &request)
{
    QByteArray answer;
    const bool isProper = transfer(server.port(80), request, 10, answer, [] { return false; });
    HttpExchange exchange = parse(answer);
    exchange.wasReset = !isProper;
    return exchange;
}

HttpExchange HttpExchange::ask(const QByteArray &method, const QUrl &url, const QList<Header> &headers,
                               const QByteArray &body)
{
    QByteArray answer;
    const bool isProper = transfer(url.port(80), httpRequest(method, url, headers, body), 60, answer,
                                   [&answer] { return parse(answer).isWhole; });
    HttpExchange exchange = parse(answer);
    exchange.wasReset = !isProper;
    return exchange;
}

HttpExchange HttpExchange::parse(const QByteArray &answer)
{
    HttpExchange exchange;
    const qsizetype headEnd = answer.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return exchange;
    QList<QByteArray> lines = answer.left(headEnd).split('\n');
    exchange.status = lines.takeFirst().split(' ').value(1).toInt();
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        exchange.headers.emplaceBack(line.left(colon).toLower(), line.mid(colon + 1).trimmed());
    }
    exchange.body = answer.mid(headEnd + 4);
    exchange.isWhole = exchange.header("content-length") == QByteArray::number(exchange.body.size());
    return exchange;
}

QByteArray HttpExchange::header(const QByteArray &name) const
{
    for (const auto &[key, value] : headers) {
        if (key == name)
            return value;
    }
    return {};
}

} // namespace kelp::test
