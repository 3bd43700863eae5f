#include "auth/LoopbackServer.h"

#include "support/FakeClock.h"

#include <QSignalSpy>
#include <QTcpSocket>
#include <QTest>
#include <QUrl>

#include <sys/socket.h>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

const QByteArray trueRedirect = "GET /?code=c&state=s HTTP/1.1\r\n\r\n";

/// A browser's connection.
class Client
{
public:
    explicit Client(quint16 port)
    {
        m_socket.connectToHost(QHostAddress::LocalHost, port);
        QVERIFY(m_socket.waitForConnected());
    }

    void send(const QByteArray &bytes)
    {
        m_socket.write(bytes);
        m_socket.flush();
    }

    /// All that the server sends until it closes.
    QByteArray answer()
    {
        QByteArray all;
        [&] { QTRY_COMPARE(m_socket.state(), QAbstractSocket::UnconnectedState); }();
        all += m_socket.readAll();
        return all;
    }
    [[nodiscard]] bool isOpen()
    {
        QCoreApplication::processEvents();
        return m_socket.state() == QAbstractSocket::ConnectedState;
    }

private:
    QTcpSocket m_socket;
};

} // namespace

class tst_LoopbackServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void listensOnlyOnTheLoopbackAddress();
    void answersAndCompletesWithTheCode();
    void answersOtherRequestsAndWaitsOn();
    void keepsARedirectThatCameBeforeAnybodyWaited();
    void completesOnce();
    void timesOutFiveMinutesAfterWaitingBegan();
    void isCancelledByStop();
    void staysCompletedWhenStoppedLater();
    void deliversThePageAlsoWhenTheServerIsGone();
    void answersAClientThatSaysNothingAndHangsUp();
    void looksAtOneReadOnly();
    void letsTheTrueRedirectWinInAFlood();
    void closesTheOldestSilentConnectionFirst();
    void doesNotCallBackWhoeverIsGone();

private:
    void wait()
    {
        server->waitForCode(context.get(), [this](const LoopbackServer::Outcome &result) {
            outcome = result;
            ++completions;
        });
    }

    std::unique_ptr<FakeClock> clock;
    std::unique_ptr<LoopbackServer> server;
    std::unique_ptr<QObject> context;
    std::optional<LoopbackServer::Outcome> outcome;
    int completions = 0;
    quint16 port = 0;
};

void tst_LoopbackServer::init()
{
    clock = std::make_unique<FakeClock>();
    server = std::make_unique<LoopbackServer>(*clock, u"s"_s);
    context = std::make_unique<QObject>();
    outcome.reset();
    completions = 0;
    const auto redirectUri = server->start();
    QVERIFY(redirectUri);
    QVERIFY(redirectUri->startsWith(u"http://127.0.0.1:"));
    port = static_cast<quint16>(QUrl(*redirectUri).port());
    QVERIFY(port > 0);
    QVERIFY(!redirectUri->endsWith(u'/'));
}

void tst_LoopbackServer::listensOnlyOnTheLoopbackAddress()
{
    for (const QHostAddress &address : {QHostAddress(u"127.0.0.2"_s), QHostAddress(QHostAddress::LocalHostIPv6)}) {
        QTcpSocket socket;
        socket.connectToHost(address, port);
        QVERIFY(!socket.waitForConnected(2000));
    }
}

void tst_LoopbackServer::answersAndCompletesWithTheCode()
{
    wait();
    Client browser(port);
    browser.send(trueRedirect);
    QVERIFY(browser.answer().endsWith("<p>You can close this tab and go back to Kelp.</p>"
                                      "<script>window.close()</script></body></html>"));
    QTRY_VERIFY(outcome);
    QCOMPARE(**outcome, u"c"_s);
    QTcpSocket late;
    late.connectToHost(QHostAddress::LocalHost, port);
    QVERIFY(!late.waitForConnected(2000));
}

void tst_LoopbackServer::answersOtherRequestsAndWaitsOn()
{
    wait();
    Client icon(port);
    icon.send("GET /favicon.ico HTTP/1.1\r\n\r\n");
    QVERIFY(icon.answer().startsWith("HTTP/1.1 404 Not Found\r\n"));
    Client forged(port);
    forged.send("GET /?code=evil&state=guess HTTP/1.1\r\n\r\n");
    QVERIFY(forged.answer().startsWith("HTTP/1.1 404 Not Found\r\n"));
    QVERIFY(!outcome);
    Client browser(port);
    browser.send(trueRedirect);
    QTRY_VERIFY(outcome);
    QCOMPARE(**outcome, u"c"_s);
}

void tst_LoopbackServer::keepsARedirectThatCameBeforeAnybodyWaited()
{
    Client browser(port);
    browser.send(trueRedirect);
    QVERIFY(browser.answer().startsWith("HTTP/1.1 200 OK\r\n"));
    wait();
    QVERIFY(!outcome); // never before waitForCode has returned
    QTRY_VERIFY(outcome);
    QCOMPARE(**outcome, u"c"_s);
}

void tst_LoopbackServer::completesOnce()
{
    wait();
    Client first(port);
    Client second(port);
    first.send(trueRedirect);
    QVERIFY(!first.answer().isEmpty());
    second.send("GET /?code=other&state=s HTTP/1.1\r\n\r\n");
    QVERIFY(second.answer().startsWith("HTTP/1.1 200 OK\r\n"));
    clock->advance(301);
    QTRY_COMPARE(completions, 1);
    QCOMPARE(**outcome, u"c"_s);
}

void tst_LoopbackServer::timesOutFiveMinutesAfterWaitingBegan()
{
    clock->advance(1000);
    wait();
    clock->advance(299.9);
    QCoreApplication::processEvents();
    QVERIFY(!outcome);
    clock->advance(0.1);
    QTRY_VERIFY(outcome);
    QCOMPARE(outcome->error().description(), u"Sign-in timed out."_s);
}

void tst_LoopbackServer::isCancelledByStop()
{
    wait();
    server->stop();
    QTRY_VERIFY(outcome);
    QCOMPARE(outcome->error().kind, AuthError::Kind::cancelled);
}

void tst_LoopbackServer::staysCompletedWhenStoppedLater()
{
    Client browser(port);
    browser.send(trueRedirect);
    QVERIFY(!browser.answer().isEmpty());
    server->stop();
    wait();
    QTRY_VERIFY(outcome);
    QVERIFY(*outcome);
}

void tst_LoopbackServer::deliversThePageAlsoWhenTheServerIsGone()
{
    server->waitForCode(context.get(), [this](const LoopbackServer::Outcome &) { server.reset(); });
    Client browser(port);
    browser.send(trueRedirect);
    QTRY_VERIFY(!server);
    QVERIFY(browser.answer().endsWith("</html>"));
}

void tst_LoopbackServer::answersAClientThatSaysNothingAndHangsUp()
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    QVERIFY(socket.waitForConnected());
    ::shutdown(static_cast<int>(socket.socketDescriptor()), SHUT_WR);
    QTRY_COMPARE(socket.state(), QAbstractSocket::UnconnectedState);
    QVERIFY(socket.readAll().startsWith("HTTP/1.1 404 Not Found\r\n"));
}

void tst_LoopbackServer::looksAtOneReadOnly()
{
    wait();
    Client slow(port);
    slow.send("GET /?code=c");
    QVERIFY(slow.answer().startsWith("HTTP/1.1 404 Not Found\r\n"));
    Client large(port);
    large.send("GET /?code=c&state=s HTTP/1.1\r\nX: " + QByteArray(1 << 20, 'x') + "\r\n\r\n");
    QVERIFY(large.answer().endsWith("</html>"));
    QTRY_VERIFY(outcome);
    QVERIFY(*outcome);
}

void tst_LoopbackServer::letsTheTrueRedirectWinInAFlood()
{
    wait();
    std::vector<std::unique_ptr<Client>> flood;
    for (int i = 0; i < 400; ++i) {
        flood.push_back(std::make_unique<Client>(port));
        if (i % 2)
            flood.back()->send("GET /" + QByteArray::number(i) + " HTTP/1.1\r\n\r\n");
        QCoreApplication::processEvents();
    }
    Client browser(port);
    browser.send(trueRedirect);
    QVERIFY(browser.answer().startsWith("HTTP/1.1 200 OK\r\n"));
    QTRY_VERIFY(outcome);
    QCOMPARE(**outcome, u"c"_s);
}

void tst_LoopbackServer::closesTheOldestSilentConnectionFirst()
{
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < LoopbackServer::mostConnections; ++i) {
        clients.push_back(std::make_unique<Client>(port));
        QCoreApplication::processEvents();
    }
    QVERIFY(clients.front()->isOpen());
    Client next(port);
    QTRY_VERIFY(!clients.front()->isOpen());
    QVERIFY(clients[1]->isOpen());
    QVERIFY(next.isOpen());
}

void tst_LoopbackServer::doesNotCallBackWhoeverIsGone()
{
    wait();
    context.reset();
    Client browser(port);
    browser.send(trueRedirect);
    QVERIFY(!browser.answer().isEmpty());
    QCOMPARE(completions, 0);
}

QTEST_GUILESS_MAIN(tst_LoopbackServer)
#include "tst_LoopbackServer.moc"
