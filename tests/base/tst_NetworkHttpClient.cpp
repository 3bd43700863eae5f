#include "base/NetworkHttpClient.h"

#include "support/FakeClock.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

/// Answers each request with fixed bytes and remembers what it was asked.
class Server
{
public:
    enum class Ending { close, keepOpen, reset };

    explicit Server(QByteArray answer, Ending ending = Ending::close)
    {
        QVERIFY(m_listener.listen(QHostAddress::LocalHost));
        QObject::connect(&m_listener, &QTcpServer::newConnection, &m_listener, [this, answer, ending] {
            QTcpSocket *socket = m_listener.nextPendingConnection();
            sockets.append(socket);
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [=, this] {
                QByteArray &request = requests[socket];
                request += socket->readAll();
                const qsizetype head = request.indexOf("\r\n\r\n");
                const qsizetype field = request.indexOf("Content-Length: ");
                const qsizetype body =
                    field < 0 ? 0 : request.mid(field + 16, request.indexOf('\r', field) - field - 16).toInt();
                if (head < 0 || request.size() < head + 4 + body)
                    return;
                socket->write(answer);
                if (ending == Ending::close)
                    socket->disconnectFromHost();
                if (ending == Ending::reset) {
                    socket->flush();
                    socket->abort();
                }
            });
        });
    }

    [[nodiscard]] QUrl url() const { return QUrl(u"http://127.0.0.1:%1/path?q=%2520"_s.arg(m_listener.serverPort())); }
    [[nodiscard]] quint16 port() const { return m_listener.serverPort(); }

    QList<QTcpSocket *> sockets;
    QHash<QTcpSocket *, QByteArray> requests;

private:
    QTcpServer m_listener;
};

QByteArray answer(const QByteArray &status, const QByteArray &body, const QByteArray &headers = {})
{
    return "HTTP/1.1 " + status + "\r\n" + headers + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" +
           body;
}

} // namespace

class tst_NetworkHttpClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void sendsWhatItIsGiven();
    void takesAnyStatusAsAnAnswer_data();
    void takesAnyStatusAsAnAnswer();
    void followsNoRedirect();
    void givesUpAfterAMinuteInAll();
    void givesUpOnABodyOverEightMebibytes_data();
    void givesUpOnABodyOverEightMebibytes();
    void doesNotWaitForTheEndOfAnEndlessBody();
    void reportsABrokenAnswer_data();
    void reportsABrokenAnswer();
    void reportsARefusedConnection();
    void refusesAnUnverifiedServer();
    void asksInAConnectionOfItsOwn();
    void keepsNoCookies();
    void usesNoProxyForThisComputer();
    void doesNotCallBackWhoeverIsGone();

private:
    void get(const QUrl &url, const QList<std::pair<QByteArray, QByteArray>> &headers = {})
    {
        client->send({.method = "GET", .url = url, .headers = headers, .body = {}}, context.get(),
                     [this](const Result<HttpResponse, HttpError> &result) { outcome = result; });
    }

    std::unique_ptr<FakeClock> clock;
    std::unique_ptr<NetworkHttpClient> client;
    std::unique_ptr<QObject> context;
    std::optional<Result<HttpResponse, HttpError>> outcome;
};

void tst_NetworkHttpClient::init()
{
    clock = std::make_unique<FakeClock>();
    client = std::make_unique<NetworkHttpClient>(*clock);
    context = std::make_unique<QObject>();
    outcome.reset();
}

void tst_NetworkHttpClient::sendsWhatItIsGiven()
{
    Server server(answer("200 OK", "fine"));
    client->send({.method = "POST",
                  .url = server.url(),
                  .headers = {{"Content-Type", "application/x-www-form-urlencoded"}, {"X-Own", "1"}},
                  .body = "a=b%2Fc"},
                 context.get(), [this](const Result<HttpResponse, HttpError> &result) { outcome = result; });
    QVERIFY(!outcome);
    QTRY_VERIFY(outcome);
    QVERIFY(**outcome == (HttpResponse{200, "fine"}));
    const QByteArray request = server.requests.begin().value();
    QVERIFY2(request.startsWith("POST /path?q=%2520 HTTP/1.1\r\n"), request.constData());
    QVERIFY(request.contains("\r\nX-Own: 1\r\n"));
    QVERIFY(request.contains("\r\nContent-Type: application/x-www-form-urlencoded\r\n"));
    QVERIFY(request.endsWith("\r\n\r\na=b%2Fc"));
}

void tst_NetworkHttpClient::takesAnyStatusAsAnAnswer_data()
{
    QTest::addColumn<QByteArray>("status");
    for (const char *status :
         {"200 OK", "201 Created", "302 Found", "400 Bad Request", "401 Unauthorized", "403 Forbidden", "404 Not Found",
          "418 Teapot", "429 Too Many Requests", "500 Internal Server Error", "503 Service Unavailable"})
        QTest::newRow(status) << QByteArray(status);
}

void tst_NetworkHttpClient::takesAnyStatusAsAnAnswer()
{
    QFETCH(QByteArray, status);
    Server server(answer(status, "<html>body</html>", "WWW-Authenticate: Bearer realm=\"x\"\r\n"));
    get(server.url());
    QTRY_VERIFY(outcome);
    QVERIFY2(*outcome, qPrintable(*outcome ? QString() : outcome->error().description()));
    QVERIFY(**outcome == (HttpResponse{status.left(3).toInt(), "<html>body</html>"}));
    QCOMPARE(server.sockets.size(), 1);
}

void tst_NetworkHttpClient::followsNoRedirect()
{
    Server other(answer("200 OK", "stolen"));
    for (const QByteArray status : {"301 Moved", "302 Found", "307 Temporary Redirect", "308 Permanent Redirect"}) {
        Server server(answer(status, "", "Location: http://127.0.0.1:" + QByteArray::number(other.port()) + "/\r\n"));
        outcome.reset();
        get(server.url(), {{"Authorization", "Bearer secret"}});
        QTRY_VERIFY(outcome);
        QCOMPARE((*outcome)->status, status.left(3).toInt());
    }
    QVERIFY(other.sockets.isEmpty());
}

void tst_NetworkHttpClient::givesUpAfterAMinuteInAll()
{
    Server server("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n", Server::Ending::keepOpen);
    get(server.url());
    QTRY_COMPARE(server.requests.size(), 1);
    // Bytes keep coming, slowly: every one of them would start a time-out between bytes anew.
    for (int second = 0; second < 60; ++second) {
        QVERIFY(!outcome);
        server.sockets.first()->write("x");
        server.sockets.first()->flush();
        QCoreApplication::processEvents();
        clock->advance(1);
    }
    QVERIFY(outcome);
    QCOMPARE(outcome->error().kind, HttpError::Kind::timedOut);
    QTRY_COMPARE(server.sockets.first()->state(), QAbstractSocket::UnconnectedState);
}

void tst_NetworkHttpClient::givesUpOnABodyOverEightMebibytes_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("exactly") << NetworkHttpClient::largestBody << true;
    QTest::newRow("one more") << NetworkHttpClient::largestBody + 1 << false;
}

void tst_NetworkHttpClient::givesUpOnABodyOverEightMebibytes()
{
    QFETCH(qint64, size);
    QFETCH(bool, accepted);
    Server server(answer("200 OK", QByteArray(size, 'x')));
    get(server.url());
    QTRY_VERIFY(outcome);
    QCOMPARE(outcome->has_value(), accepted);
    if (accepted)
        QCOMPARE((*outcome)->body.size(), size);
    else
        QCOMPARE(outcome->error().kind, HttpError::Kind::tooLarge);
}

void tst_NetworkHttpClient::doesNotWaitForTheEndOfAnEndlessBody()
{
    Server server("HTTP/1.1 200 OK\r\nContent-Length: 999999999\r\n\r\n" + QByteArray(9 * 1024 * 1024, 'x'),
                  Server::Ending::keepOpen);
    get(server.url());
    QTRY_VERIFY(outcome);
    QCOMPARE(outcome->error().kind, HttpError::Kind::tooLarge);
}

void tst_NetworkHttpClient::reportsABrokenAnswer_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("ending");
    QTest::newRow("shorter than promised")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc") << static_cast<int>(Server::Ending::close);
    QTest::newRow("reset in the body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc")
                                       << static_cast<int>(Server::Ending::reset);
    QTest::newRow("no HTTP") << QByteArray("SSH-2.0-x\r\n") << static_cast<int>(Server::Ending::close);
    QTest::newRow("broken chunks") << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab")
                                   << static_cast<int>(Server::Ending::close);
}

void tst_NetworkHttpClient::reportsABrokenAnswer()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, ending);
    Server server(bytes, static_cast<Server::Ending>(ending));
    get(server.url());
    QTRY_VERIFY(outcome);
    QVERIFY(!*outcome);
    QCOMPARE(outcome->error().kind, HttpError::Kind::transport);
    QVERIFY(!outcome->error().description().isEmpty());
}

void tst_NetworkHttpClient::reportsARefusedConnection()
{
    QTcpServer closed;
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    const QUrl url(u"http://127.0.0.1:%1/"_s.arg(closed.serverPort()));
    closed.close();
    get(url);
    QTRY_VERIFY(outcome);
    QCOMPARE(outcome->error().kind, HttpError::Kind::transport);
}

void tst_NetworkHttpClient::refusesAnUnverifiedServer()
{
    QFile file(qEnvironmentVariable("KELP_TEST_DATA") + u"/self-signed-localhost.pem"_s);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray pem = file.readAll();
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(pem));
    configuration.setPrivateKey(QSslKey(pem, QSsl::Rsa));
    QSslServer server;
    server.setSslConfiguration(configuration);
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QByteArray received;
    connect(&server, &QTcpServer::pendingConnectionAvailable, this, [&] {
        QTcpSocket *socket = server.nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, this, [&received, socket] { received += socket->readAll(); });
    });
    get(QUrl(u"https://127.0.0.1:%1/"_s.arg(server.serverPort())), {{"Authorization", "Bearer secret"}});
    QTRY_VERIFY(outcome);
    QVERIFY(!*outcome);
    QCOMPARE(outcome->error().kind, HttpError::Kind::insecure);
    QVERIFY(received.isEmpty());
}

void tst_NetworkHttpClient::asksInAConnectionOfItsOwn()
{
    QFile file(qEnvironmentVariable("KELP_TEST_DATA") + u"/self-signed-localhost.pem"_s);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray pem = file.readAll();
    const QSslConfiguration usual = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = usual;
    trusting.setCaCertificates({QSslCertificate(pem)});
    QSslConfiguration::setDefaultConfiguration(trusting);
    QSslConfiguration configuration = usual;
    configuration.setLocalCertificate(QSslCertificate(pem));
    configuration.setPrivateKey(QSslKey(pem, QSsl::Rsa));
    // As Google's servers do; the newer protocol would put all requests into one connection.
    configuration.setAllowedNextProtocols(
        {QSslConfiguration::ALPNProtocolHTTP2, QSslConfiguration::NextProtocolHttp1_1});
    QSslServer server;
    server.setSslConfiguration(configuration);
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QByteArray received;
    connect(&server, &QTcpServer::pendingConnectionAvailable, this, [&] {
        QTcpSocket *socket = server.nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, this, [&received, socket] {
            received += socket->readAll();
            if (received.endsWith("\r\n\r\n"))
                socket->write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
        });
    });
    get(QUrl(u"https://127.0.0.1:%1/"_s.arg(server.serverPort())));
    QTRY_VERIFY(!received.isEmpty());
    QSslConfiguration::setDefaultConfiguration(usual);
    QVERIFY2(received.startsWith("GET / HTTP/1.1\r\n"), received.constData());
    QTRY_VERIFY(outcome);
    QCOMPARE((*outcome)->body, "ok");
}

void tst_NetworkHttpClient::keepsNoCookies()
{
    Server server(answer("200 OK", "", "Set-Cookie: a=b\r\n"));
    get(server.url());
    QTRY_VERIFY(outcome);
    outcome.reset();
    get(server.url());
    QTRY_VERIFY(outcome);
    for (const QByteArray &request : std::as_const(server.requests))
        QVERIFY(!request.toLower().contains("\r\ncookie:"));
}

void tst_NetworkHttpClient::usesNoProxyForThisComputer()
{
    Server proxy(answer("200 OK", "through the proxy"));
    qputenv("http_proxy", "http://127.0.0.1:" + QByteArray::number(proxy.port()));
    Server server(answer("200 OK", "directly"));
    get(server.url());
    QTRY_VERIFY(outcome);
    QCOMPARE((*outcome)->body, "directly");
    // The variable counts for everybody else; this name has no address.
    outcome.reset();
    get(QUrl(u"http://kelp.invalid/"_s));
    QTRY_VERIFY(outcome);
    QCOMPARE((*outcome)->body, "through the proxy");
    qunsetenv("http_proxy");
}

void tst_NetworkHttpClient::doesNotCallBackWhoeverIsGone()
{
    Server server(answer("200 OK", "fine"), Server::Ending::keepOpen);
    get(server.url());
    context.reset();
    context = std::make_unique<QObject>();
    Server other(answer("200 OK", "later"));
    get(other.url());
    QTRY_VERIFY(outcome);
    QCOMPARE((*outcome)->body, "later");
}

QTEST_GUILESS_MAIN(tst_NetworkHttpClient)
#include "tst_NetworkHttpClient.moc"
