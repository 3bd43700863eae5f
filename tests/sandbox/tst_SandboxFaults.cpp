#include "SandboxFixture.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpSocket>
#include <QTest>

#include <memory>

using namespace kelp::test;
using namespace Qt::StringLiterals;

class tst_SandboxFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void answersWithTheFault_data();
    void answersWithTheFault();
    void concernsItsEndpointOnly();
    void runsOut();
    void comesFromTheSeed();
    void spoilsTypes();
    void answersTooMuch();
    void keepsTheRefreshToken();
    void redirectsElsewhere();
    void resetsInTheMiddle();
    void dripsWithoutEnd();
    void leavesRequestsHanging();
    void refusesFaults_data();
    void refusesFaults();
    void endsAllAccessTokens();
    void logsRequests();
    void refusesToReplaceUnknownCalendars();
    void writesALogFile();
    void takesTheDefaultSeed();
    void worksWithKeptConnectionsAndCompression();
    void refusesATakenPort();
    void endsAtOnceWithOpenConnections();

private:
    [[nodiscard]] QByteArray rawGet(const QString &path) const;

    std::unique_ptr<SandboxFixture> m_fixture;
    QByteArray m_token;
};

namespace {

const QString listPath = u"/users/me/calendarList"_s;

} // namespace

void tst_SandboxFaults::init()
{
    m_fixture = std::make_unique<SandboxFixture>();
    QVERIFY2(m_fixture->start(), qPrintable(m_fixture->sandbox.error()));
    m_token = m_fixture->accessToken();
}

QByteArray tst_SandboxFaults::rawGet(const QString &path) const
{
    return httpRequest("GET", m_fixture->sandbox.url(u"/calendar/v3"_s + path),
                       {{"Authorization", "Bearer " + m_token}});
}

void tst_SandboxFaults::answersWithTheFault_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("contentType");
    QTest::addColumn<bool>("isJson");
    QTest::newRow("401") << u"unauthorizedOnce"_s << 401 << QByteArray("application/json") << true;
    QTest::newRow("403") << u"forbidden"_s << 403 << QByteArray("application/json") << true;
    QTest::newRow("500") << u"serverErrorHtml"_s << 500 << QByteArray("text/html") << false;
    QTest::newRow("page") << u"htmlWith200"_s << 200 << QByteArray("text/html") << false;
    QTest::newRow("invalid JSON") << u"invalidJson"_s << 200 << QByteArray("application/json") << false;
    QTest::newRow("wrong types") << u"wrongTypes"_s << 200 << QByteArray("application/json") << true;
}

void tst_SandboxFaults::answersWithTheFault()
{
    QFETCH(QString, kind);
    QFETCH(int, status);
    QFETCH(QByteArray, contentType);
    QFETCH(bool, isJson);
    for (const QString &at : {u"calendarList"_s, u"events"_s, u"primary"_s, u"token"_s, u"*"_s}) {
        QVERIFY(m_fixture->sandbox.setFault(at, kind));
        HttpExchange answer;
        if (at == u"token")
            answer = m_fixture->token(SandboxFixture::refreshItems(u"1//seeded-a"_s));
        else if (at == u"events")
            answer = m_fixture->get(u"/calendars/primary/events"_s, m_token);
        else
            answer = m_fixture->get(at == u"primary" ? u"/calendars/primary"_s : listPath, m_token);
        QCOMPARE(answer.status, status);
        QVERIFY(answer.isWhole);
        QVERIFY(answer.header("content-type").startsWith(contentType));
        QCOMPARE(QJsonDocument::fromJson(answer.body).isObject(), isJson);
        if (kind == u"forbidden" && at != u"token")
            QCOMPARE(jsonBody(answer)[u"error"_s][u"message"_s], u"Rate Limit Exceeded"_s);
        if (kind == u"serverErrorHtml")
            QVERIFY(answer.body.size() > 200);
        QVERIFY(m_fixture->sandbox.clearFaults());
    }
}

void tst_SandboxFaults::concernsItsEndpointOnly()
{
    QVERIFY(m_fixture->sandbox.setFault(u"events"_s, u"forbidden"_s));
    QCOMPARE(m_fixture->get(listPath, m_token).status, 200);
    QCOMPARE(m_fixture->get(u"/calendars/primary"_s, m_token).status, 200);
    QCOMPARE(m_fixture->get(u"/calendars/primary/events"_s, m_token).status, 403);
    QVERIFY(m_fixture->sandbox.setFault(u"*"_s, u"forbidden"_s));
    QCOMPARE(m_fixture->get(u"/calendars/primary"_s, m_token).status, 403);
    QCOMPARE(HttpExchange::send("GET", m_fixture->consentPage(SandboxFixture::consentItems())).status, 200);
}

void tst_SandboxFaults::runsOut()
{
    QVERIFY(m_fixture->sandbox.setFault(u"calendarList"_s, u"unauthorizedOnce"_s));
    QCOMPARE(m_fixture->get(listPath, m_token).status, 401);
    QCOMPARE(m_fixture->get(listPath, m_token).status, 200);

    QVERIFY(m_fixture->sandbox.setFault(u"calendarList"_s, u"forbidden"_s, 2));
    QVERIFY(m_fixture->sandbox.setFault(u"calendarList"_s, u"serverErrorHtml"_s, 1));
    QList<int> statuses;
    for (int i = 0; i < 4; ++i)
        statuses.append(m_fixture->get(listPath, m_token).status);
    QCOMPARE(statuses, (QList<int>{403, 403, 500, 200}));

    QVERIFY(m_fixture->sandbox.setFault(u"calendarList"_s, u"forbidden"_s));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(m_fixture->get(listPath, m_token).status, 403);
    QVERIFY(m_fixture->sandbox.clearFaults());
    QCOMPARE(m_fixture->get(listPath, m_token).status, 200);
}

void tst_SandboxFaults::comesFromTheSeed()
{
    SandboxFixture fixture;
    const QJsonObject fault{{u"at"_s, u"token"_s}, {u"kind"_s, u"serverErrorHtml"_s}, {u"times"_s, 1}};
    QVERIFY(fixture.start({{u"faults"_s, QJsonArray{fault}}}));
    const HttpExchange list = HttpExchange::send("GET", fixture.sandbox.url(u"/sandbox/faults"_s));
    QCOMPARE(QJsonDocument::fromJson(list.body).array(), QJsonArray{fault});
    QCOMPARE(fixture.token(SandboxFixture::refreshItems(u"1//seeded-a"_s)).status, 500);
    QCOMPARE(fixture.token(SandboxFixture::refreshItems(u"1//seeded-a"_s)).status, 200);
}

void tst_SandboxFaults::spoilsTypes()
{
    QVERIFY(m_fixture->sandbox.setFault(u"*"_s, u"wrongTypes"_s));
    QVERIFY(jsonBody(m_fixture->get(listPath, m_token))[u"items"_s][0][u"id"_s].isDouble());
    QVERIFY(jsonBody(m_fixture->get(u"/calendars/primary/events"_s, m_token))[u"items"_s].isString()); // it has none
    QVERIFY(jsonBody(m_fixture->get(u"/calendars/primary"_s, m_token))[u"id"_s].isDouble());
    const QJsonObject tokens = jsonBody(m_fixture->token(SandboxFixture::refreshItems(u"1//seeded-a"_s)));
    QVERIFY(tokens[u"access_token"_s].isDouble());
    QVERIFY(tokens[u"expires_in"_s].isString());
}

void tst_SandboxFaults::answersTooMuch()
{
    QVERIFY(m_fixture->sandbox.setFault(u"calendarList"_s, u"tooLarge"_s));
    const HttpExchange answer = m_fixture->get(listPath, m_token);
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.body.size() > 8 * 1024 * 1024);
    QVERIFY(answer.isWhole);
    QCOMPARE(jsonBody(answer)[u"items"_s].toArray().size(), 4);
}

void tst_SandboxFaults::keepsTheRefreshToken()
{
    QVERIFY(m_fixture->sandbox.setFault(u"token"_s, u"noRefreshToken"_s, 1));
    // A refresh never has one, so that the fault waits.
    QCOMPARE(m_fixture->token(SandboxFixture::refreshItems(u"1//seeded-a"_s)).status, 200);
    const auto exchange = [&] {
        return jsonBody(m_fixture->token(SandboxFixture::exchangeItems(m_fixture->newCode(u"a@example.com"_s))));
    };
    const QJsonObject first = exchange();
    QVERIFY(first.contains(u"access_token"_s));
    QVERIFY(!first.contains(u"refresh_token"_s));
    QVERIFY(exchange().contains(u"refresh_token"_s));
}

void tst_SandboxFaults::redirectsElsewhere()
{
    QVERIFY(m_fixture->sandbox.setFault({{u"at"_s, u"events"_s}, {u"kind"_s, u"redirect"_s}, {u"port"_s, 4711}}));
    const HttpExchange answer = m_fixture->get(u"/calendars/primary/events?maxResults=5"_s, m_token);
    QCOMPARE(answer.status, 302);
    QCOMPARE(answer.header("location"), "http://127.0.0.1:4711/calendar/v3/calendars/primary/events?maxResults=5");
    QVERIFY(m_fixture->sandbox.clearFaults());
    QVERIFY(m_fixture->sandbox.setFault(
        {{u"at"_s, u"token"_s}, {u"kind"_s, u"redirect"_s}, {u"location"_s, u"http://localhost:1/x"_s}}));
    QCOMPARE(m_fixture->token({}).header("location"), "http://localhost:1/x");
}

void tst_SandboxFaults::resetsInTheMiddle()
{
    QVERIFY(m_fixture->sandbox.setFault(u"calendarList"_s, u"reset"_s, 1));
    const HttpExchange answer = m_fixture->get(listPath, m_token);
    QVERIFY(answer.wasReset);
    QVERIFY(!answer.isWhole);
    const HttpExchange next = m_fixture->get(listPath, m_token);
    QVERIFY(!next.wasReset);
    QVERIFY(next.isWhole);
}

void tst_SandboxFaults::dripsWithoutEnd()
{
    QVERIFY(m_fixture->sandbox.setFault({{u"at"_s, u"primary"_s}, {u"kind"_s, u"slowDrip"_s}, {u"interval"_s, 0.001}}));
    QTcpSocket socket;
    socket.connectToHost(u"127.0.0.1"_s, static_cast<quint16>(m_fixture->sandbox.baseUrl().port()));
    socket.write(rawGet(u"/calendars/primary"_s));
    QByteArray got;
    int reads = 0;
    while (got.size() < 1200 && socket.waitForReadyRead(5000)) {
        got += socket.readAll();
        ++reads;
    }
    QVERIFY(got.startsWith("HTTP/1.1 200"));
    QVERIFY(!got.contains("Content-Length"));
    QVERIFY(reads > 20); // byte by byte
    QVERIFY(got.endsWith("    "));
    QVERIFY(QJsonDocument::fromJson(got.mid(got.indexOf("\r\n\r\n") + 4)).isObject());
    QCOMPARE(socket.state(), QAbstractSocket::ConnectedState);
}

void tst_SandboxFaults::leavesRequestsHanging()
{
    QVERIFY(m_fixture->sandbox.setFault(u"calendarList"_s, u"hang"_s));
    QTcpSocket socket;
    socket.connectToHost(u"127.0.0.1"_s, static_cast<quint16>(m_fixture->sandbox.baseUrl().port()));
    socket.write(rawGet(listPath));
    QVERIFY(socket.waitForBytesWritten());
    QTRY_COMPARE(m_fixture->sandbox.requests().last().status, 0);
    QCOMPARE(socket.bytesAvailable(), 0);
    QCOMPARE(socket.state(), QAbstractSocket::ConnectedState);
    QCOMPARE(m_fixture->get(u"/calendars/primary"_s, m_token).status, 200);
}

void tst_SandboxFaults::refusesFaults_data()
{
    QTest::addColumn<QJsonObject>("fault");
    QTest::newRow("empty") << QJsonObject{};
    QTest::newRow("kind") << QJsonObject{{u"kind"_s, u"odd"_s}};
    QTest::newRow("place") << QJsonObject{{u"at"_s, u"nowhere"_s}, {u"kind"_s, u"forbidden"_s}};
    QTest::newRow("times") << QJsonObject{{u"kind"_s, u"forbidden"_s}, {u"times"_s, 0}};
    QTest::newRow("interval") << QJsonObject{{u"kind"_s, u"slowDrip"_s}, {u"interval"_s, -1}};
    QTest::newRow("redirect to nowhere") << QJsonObject{{u"kind"_s, u"redirect"_s}};
    QTest::newRow("redirect with a header")
        << QJsonObject{{u"kind"_s, u"redirect"_s}, {u"location"_s, u"http://x/\r\nA: b"_s}};
}

void tst_SandboxFaults::refusesFaults()
{
    QFETCH(QJsonObject, fault);
    QVERIFY(!m_fixture->sandbox.setFault(fault));
    QCOMPARE(m_fixture->get(listPath, m_token).status, 200);
}

void tst_SandboxFaults::endsAllAccessTokens()
{
    QVERIFY(m_fixture->sandbox.expireAccessTokens());
    QCOMPARE(m_fixture->get(listPath, m_token).status, 401);
    QCOMPARE(m_fixture->get(listPath, m_fixture->accessToken()).status, 200);
}

void tst_SandboxFaults::logsRequests()
{
    QVERIFY(m_fixture->sandbox.clearRequests());
    QCOMPARE(
        m_fixture
            ->get(u"/calendars/en%23holiday@group/events?maxResults=5&timeMin=2026-01-01T00:00:00%2B01:00"_s, m_token)
            .status,
        200);
    QCOMPARE(m_fixture->token({{u"grant_type"_s, u"a/b &c"_s}, {u"x"_s, u"y"_s}}).status, 400);
    const QList<LoggedRequest> requests = m_fixture->sandbox.requests();
    QCOMPARE(requests.size(), 2); // the control interface itself is left out
    const LoggedRequest &get = requests[0];
    QCOMPARE(get.method, u"GET");
    QCOMPARE(get.path, u"/calendar/v3/calendars/en%23holiday@group/events");
    QCOMPARE(get.rawQuery, u"maxResults=5&timeMin=2026-01-01T00:00:00%2B01:00");
    const SandboxFixture::Items query{{u"maxResults"_s, u"5"_s}, {u"timeMin"_s, u"2026-01-01T00:00:00+01:00"_s}};
    QCOMPARE(get.query, query);
    QCOMPARE(get.headers.value(u"authorization"_s), QString::fromLatin1("Bearer " + m_token));
    QCOMPARE(get.status, 200);
    QCOMPARE(get.form, SandboxFixture::Items{});
    const SandboxFixture::Items form{{u"grant_type"_s, u"a/b &c"_s}, {u"x"_s, u"y"_s}};
    QCOMPARE(requests[1].form, form);
    QCOMPARE(requests[1].headers.value(u"content-type"_s), u"application/x-www-form-urlencoded");
    QCOMPARE(requests[1].status, 400);
}

void tst_SandboxFaults::refusesToReplaceUnknownCalendars()
{
    QVERIFY(!m_fixture->sandbox.replaceEvents(u"x@example.com"_s, u"primary"_s, {}));
    QVERIFY(!m_fixture->sandbox.replaceEvents(u"a@example.com"_s, u"other"_s, {}));
    QVERIFY(
        !m_fixture->sandbox.replaceEvents(u"a@example.com"_s, u"primary"_s, {QJsonObject{{u"startsIn"_s, u"x"_s}}}));
    QVERIFY(m_fixture->sandbox.replaceEvents(u"a@example.com"_s, u"write"_s, {QJsonObject{{u"startsIn"_s, 5}}}));
}

void tst_SandboxFaults::writesALogFile()
{
    const QTemporaryDir folder;
    QFile faults(folder.filePath(u"faults.json"_s));
    QVERIFY(faults.open(QIODevice::WriteOnly) && faults.write(R"([{"at": "token", "kind": "forbidden"}])") > 0);
    faults.close();
    QFile log(folder.filePath(u"log"_s));
    Sandbox sandbox;
    QVERIFY(sandbox.start(SandboxFixture::seed(), {u"--log"_s, log.fileName(), u"--faults"_s, faults.fileName()}));
    QCOMPARE(HttpExchange::send("GET", sandbox.tokenUrl()).status, 403);
    QCOMPARE(HttpExchange::send("GET", sandbox.url(u"/x"_s)).status, 404);
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = log.readAll().trimmed().split('\n');
    QCOMPARE(lines.size(), 2);
    QCOMPARE(QJsonDocument::fromJson(lines[0])[u"status"_s], 403);
    QCOMPARE(QJsonDocument::fromJson(lines[1])[u"path"_s], u"/x"_s);
}

void tst_SandboxFaults::takesTheDefaultSeed()
{
    SandboxFixture fixture;
    QVERIFY2(fixture.sandbox.start(), qPrintable(fixture.sandbox.error()));
    const QByteArray token =
        jsonBody(fixture.token(SandboxFixture::refreshItems(u"1//sandbox-robin"_s)))[u"access_token"_s]
            .toString()
            .toUtf8();
    const QJsonArray calendars = jsonBody(fixture.get(listPath, token))[u"items"_s].toArray();
    QCOMPARE(calendars.size(), 3);
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    const QJsonArray events =
        jsonBody(fixture.get(u"/calendars/primary/events?singleEvents=true&orderBy=startTime"_s, token))[u"items"_s]
            .toArray();
    const QJsonObject first = events[0].toObject();
    const qint64 start =
        QDateTime::fromString(first[u"start"_s][u"dateTime"_s].toString(), Qt::ISODate).toSecsSinceEpoch();
    QVERIFY(start - now > 30 && start - now <= 65);
    QVERIFY(first[u"hangoutLink"_s].toString().startsWith(u"https://meet.google.com/"));
}

void tst_SandboxFaults::worksWithKeptConnectionsAndCompression()
{
    QNetworkAccessManager manager;
    QNetworkRequest request(m_fixture->sandbox.url(u"/calendar/v3"_s + listPath));
    request.setRawHeader("Authorization", "Bearer " + m_token);
    for (int i = 0; i < 10; ++i) {
        const std::unique_ptr<QNetworkReply> reply(manager.get(request));
        QTRY_VERIFY(reply->isFinished());
        QCOMPARE(reply->error(), QNetworkReply::NoError);
        QCOMPARE(QJsonDocument::fromJson(reply->readAll())[u"items"_s].toArray().size(), 4);
    }
}

void tst_SandboxFaults::refusesATakenPort()
{
    Sandbox second;
    QVERIFY(!second.start(std::nullopt, {u"--port"_s, QString::number(m_fixture->sandbox.baseUrl().port())}));
    QVERIFY(second.error().contains(u"cannot listen"));
    Sandbox third;
    QVERIFY(!third.start(std::nullopt, {u"--port"_s, u"70000"_s}));
}

void tst_SandboxFaults::endsAtOnceWithOpenConnections()
{
    QVERIFY(m_fixture->sandbox.setFault(u"calendarList"_s, u"hang"_s));
    QVERIFY(m_fixture->sandbox.setFault({{u"at"_s, u"primary"_s}, {u"kind"_s, u"slowDrip"_s}, {u"interval"_s, 60}}));
    QVERIFY(m_fixture->sandbox.clearRequests());
    std::vector<std::unique_ptr<QTcpSocket>> sockets;
    for (const QString &path : {listPath, u"/calendars/primary"_s, QString()}) {
        sockets.push_back(std::make_unique<QTcpSocket>());
        sockets.back()->connectToHost(u"127.0.0.1"_s, static_cast<quint16>(m_fixture->sandbox.baseUrl().port()));
        QVERIFY(sockets.back()->waitForConnected());
        if (!path.isEmpty()) // the last one says nothing
            sockets.back()->write(rawGet(path));
        sockets.back()->flush();
    }
    QTRY_COMPARE(m_fixture->sandbox.requests().size(), 2);
    QTcpSocket &dripping = *sockets[1];
    QByteArray dripped;
    while (!dripped.contains("\r\n\r\n{") && dripping.waitForReadyRead(5000))
        dripped += dripping.readAll();
    QElapsedTimer timer;
    timer.start();
    QVERIFY(m_fixture->sandbox.stop());
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    while (dripping.state() == QAbstractSocket::ConnectedState && dripping.waitForReadyRead(5000)) {
    }
    dripped += dripping.readAll();
    QVERIFY2(dripped.endsWith("\r\n\r\n{"), dripped.constData()); // the next byte was due in a minute
}

QTEST_GUILESS_MAIN(tst_SandboxFaults)
#include "tst_SandboxFaults.moc"
