#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpSocket>
#include <QTest>
#include <QUrl>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace {

struct Outcome
{
    int status = -1;
    QByteArray output;
    QByteArray error;
};

QString probePath()
{
    return qEnvironmentVariable("KELP_BINARY_DIR") + u"/kelp-probe"_s;
}

Outcome probe(const QStringList &arguments, const QByteArray &input, const QString &locale = u"C.UTF-8"_s)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, locale);
    process.setProcessEnvironment(environment);
    process.start(probePath(), arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished())
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

class tst_KelpProbe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void describesTheMeetingOfEachEvent();
    void decodesBodies_data();
    void decodesBodies();
    void findsDoubleSlashes();
    void runsASchedule();
    void receivesARedirect();
    void writesChimes();
    void readsSpotifyLinks();
    void writesTexts_data();
    void writesTexts();
    void refusesBadInputAndBadUsage_data();
    void refusesBadInputAndBadUsage();
};

void tst_KelpProbe::describesTheMeetingOfEachEvent()
{
    const Outcome outcome = probe({u"meetings"_s, u"Work"_s, u"w@x"_s}, R"({"items": [
        {"iCalUID": "u", "summary": "M", "hangoutLink": "https://zoom.us/j/1?pwd=p",
         "start": {"dateTime": "2026-01-01T10:00:00.5Z"}, "end": {"dateTime": "2026-01-01T11:00:00Z"}},
        {"status": "cancelled"}]})");
    QCOMPARE(outcome.status, 0);
    const QJsonArray meetings = QJsonDocument::fromJson(outcome.output).array();
    const QJsonObject expected{{u"id"_s, u"u|1767261600.5"_s},
                               {u"title"_s, u"M"_s},
                               {u"start"_s, 1767261600.5},
                               {u"end"_s, 1767265200},
                               {u"joinURL"_s, u"https://zoom.us/j/1?pwd=p"_s},
                               {u"attendeeCount"_s, 0},
                               {u"calendarName"_s, u"Work"_s},
                               {u"calendarID"_s, u"w@x"_s},
                               {u"provider"_s, u"Zoom"_s},
                               {u"appURL"_s, u"zoommtg://zoom.us/join?action=join&confno=1&pwd=p"_s}};
    QCOMPARE(meetings, QJsonArray({expected, QJsonValue()}));
}

void tst_KelpProbe::decodesBodies_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("output"); // empty: not ok
    QTest::newRow("none") << u"events"_s << QByteArray("{}") << QByteArray("{\"count\":0,\"ok\":true}\n");
    QTest::newRow("null") << u"calendars"_s << QByteArray("{\"items\":null}")
                          << QByteArray("{\"count\":0,\"ok\":true}\n");
    QTest::newRow("two") << u"events"_s << QByteArray("{\"items\":[{},{}]}")
                         << QByteArray("{\"count\":2,\"ok\":true}\n");
    QTest::newRow("wrong type") << u"events"_s << QByteArray("{\"items\":[{\"id\":1}]}") << QByteArray();
    QTest::newRow("no id") << u"calendars"_s << QByteArray("{\"items\":[{}]}") << QByteArray();
    QTest::newRow("html") << u"events"_s << QByteArray("<html>") << QByteArray();
}

void tst_KelpProbe::decodesBodies()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, output);
    const Outcome outcome = probe({u"decode"_s, kind}, body);
    QCOMPARE(outcome.status, 0);
    if (!output.isEmpty()) {
        QCOMPARE(outcome.output, output);
        return;
    }
    const QJsonObject line = QJsonDocument::fromJson(outcome.output).object();
    QCOMPARE(line.value("ok"_L1), QJsonValue(false));
    QVERIFY(!line.value("error"_L1).toString().isEmpty());
}

void tst_KelpProbe::findsDoubleSlashes()
{
    const Outcome outcome = probe({u"hotkey"_s}, R"({"t":1,"key":"/"}
{"t":1.4,"key":"/","ctrl":false,"alt":false,"meta":false,"shift":true,"repeat":false}
{"t":2,"key":"/"}
{"t":2.1,"key":"/","meta":true}
{"t":3.5,"key":"/"}

{"t":3.625,"key":"/"}
)");
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output, "{\"trigger\":1.4}\n{\"trigger\":3.625}\n");
}

void tst_KelpProbe::runsASchedule()
{
    const Outcome outcome = probe({u"schedule"_s}, R"({"from": 1000, "to": 1200, "step": 5,
        "preferences": {"leadMinutes": 1, "snoozeMinutes": 1},
        "calendars": [{"googleID": "c", "accountEmail": "a@x", "name": "C", "isPrimary": true, "googleSelected": true}],
        "meetings": [{"id": "m|1062.0", "title": "M", "start": 1062, "end": 2000, "joinURL": null, "calendarID": "a@x|c"},
                     {"id": "n|1070.0", "title": "N", "start": 1070, "end": 2000, "joinURL": "https://zoom.us/j/1",
                      "calendarID": "a@x|c"}],
        "actions": [{"at": 1020, "do": "snooze"}, {"at": 1021, "do": "join"}]})");
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output, R"({"at":1005,"event":"shown","id":"m|1062.0","previous":null}
{"at":1010,"event":"shown","id":"n|1070.0","previous":"m|1062.0"}
{"at":1020,"event":"hidden","id":"n|1070.0"}
{"at":1080,"event":"shown","id":"n|1070.0","previous":null}
)");
}

void tst_KelpProbe::receivesARedirect()
{
    QProcess process;
    process.start(probePath(), {u"loopback"_s, u"s"_s});
    QTRY_VERIFY(process.canReadLine());
    const QUrl uri(QString::fromLatin1(process.readLine().trimmed()));
    QCOMPARE(uri.host(), u"127.0.0.1"_s);
    QTcpSocket browser;
    browser.connectToHost(uri.host(), static_cast<quint16>(uri.port()));
    browser.write("GET /?code=4%2F0A&state=s HTTP/1.1\r\n\r\n");
    QTRY_COMPARE(browser.state(), QAbstractSocket::UnconnectedState);
    QVERIFY(browser.readAll().startsWith("HTTP/1.1 200 OK\r\n"));
    QTRY_VERIFY(process.canReadLine());
    QCOMPARE(process.readLine(), "{\"code\":\"4/0A\"}\n");
    QCOMPARE(process.state(), QProcess::Running);
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
}

void tst_KelpProbe::readsSpotifyLinks()
{
    const Outcome outcome = probe(
        {u"spotify-uri"_s}, " https://open.spotify.com/intl-de/track/ID?si=abc \n\nspotify:album:\nspotify:show:ID\r\n"
                            "https://example.com/track/ID\nhttps://open.spotify.com/album/a%0Ab%C3%A4\nx");
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output, "spotify:track:ID\n\n\nspotify:show:ID\n\nspotify:album:a%0Ab\u00e4\n\n");
    QVERIFY(outcome.error.isEmpty());
    // One line for each, whether or not the last one ends.
    for (const QByteArray &input : {"spotify:track:ID\n"_ba, "spotify:track:ID"_ba})
        QCOMPARE(probe({u"spotify-uri"_s}, input).output, "spotify:track:ID\n");
    QCOMPARE(probe({u"spotify-uri"_s}, "\n").output, "\n");
    QCOMPARE(probe({u"spotify-uri"_s}, "").output, "");
}

void tst_KelpProbe::writesTexts_data()
{
    QTest::addColumn<QByteArray>("call");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *call, const QString &text) { QTest::newRow(call) << QByteArray(call) << text; };
    row(R"({"fn":"card.countdown","args":{"seconds":59.5}})", u"Starts in 1:00"_s);
    row(R"({"fn":"card.countdown","args":{"seconds":0.4}})", u"Starting now"_s);
    row(R"({"fn":"card.countdown","args":{"seconds":-4}})", u"Starting now"_s);
    row(R"({"fn":"card.countdown","args":{"seconds":-5}})", u"Started 0:05 ago"_s);
    row(R"({"fn":"card.countdown","args":{"seconds":4500}})", u"Starts in 75:00"_s);
    row(R"({"fn":"card.details","args":{"start":1767258000,"end":1767259800,"attendees":5,"calendar":"Work",
        "showAttendees":true,"showCalendar":true}})",
        u"09:00 – 09:30  ·  5 people  ·  Work"_s);
    row(R"({"fn":"card.details","args":{"start":1767258000,"end":1767259800,"attendees":1,"calendar":"Work",
        "showAttendees":true,"showCalendar":false}})",
        u"09:00 – 09:30"_s);
    row(R"({"fn":"ring.label","args":{"remaining":299}})", u"4:59"_s);
    row(R"({"fn":"ring.label","args":{"remaining":-7}})", u"+0:07"_s);
    row(R"({"fn":"ring.label","args":{"remaining":0}})", u"now"_s);
    row(R"({"fn":"ring.caption","args":{"remaining":0.4}})", u"until start"_s);
    row(R"({"fn":"ring.caption","args":{"remaining":-4.9}})", u"starting"_s);
    row(R"({"fn":"ring.caption","args":{"remaining":-5}})", u"since start"_s);
    row(R"({"fn":"status.title","args":{"seconds":300,"paused":false}})", u" 5m"_s);
    row(R"({"fn":"status.title","args":{"seconds":-4}})", u" now"_s);
    row(R"({"fn":"status.title","args":{"seconds":300,"paused":true}})", u""_s);
    row(R"({"fn":"status.title","args":{"paused":false}})", u""_s);
    row(R"({"fn":"welcome.connected","args":{"email":"a@x","calendars":2}})", u"Connected to a@x · 2 calendars"_s);
    row(R"({"fn":"welcome.connected","args":{"calendars":1}})", u"Connected to Google · 1 calendar"_s);
    row(R"({"fn":"welcome.next","args":{}})", u"No meetings in the next 24 hours"_s);
    row(R"({"fn":"welcome.next","args":{"title":"M","start":1767258000,"now":1767257280}})",
        u"Next meeting: M at 09:00 (in 12 minutes)"_s);
    row(R"({"fn":"panel.countdown","args":{"seconds":0.9}})", u"now"_s);
    row(R"({"fn":"panel.countdown","args":{"seconds":60}})", u"Kelp in 2 min"_s);
    row(R"({"fn":"panel.countdown","args":{"seconds":5400}})", u"Kelp in 1 h 31 min"_s);
    row(R"({"fn":"panel.ago","args":{"seconds":59.9}})", u"just now"_s);
    row(R"({"fn":"panel.ago","args":{"seconds":7500}})", u"125 min ago"_s);
    row(R"({"fn":"panel.shortTime","args":{"date":1767258000,"now":1767257000}})", u"09:00"_s);
    row(R"({"fn":"panel.shortTime","args":{"date":1767344400,"now":1767258000}})", u"Fri 09:00"_s);
    row(R"({"fn":"panel.day","args":{"date":1767258000,"now":1767258000}})", u"Today"_s);
    row(R"({"fn":"panel.day","args":{"date":1767344400,"now":1767258000}})", u"Tomorrow"_s);
    row(R"({"fn":"panel.pauseEnd","args":{"date":1767261600,"now":1767258000}})", u"10:00"_s);
    row(R"({"fn":"panel.pauseEnd","args":{"date":1767312000,"now":1767258000}})", u"Fri 00:00"_s);
    row(R"({"fn":"panel.displayName","args":{"name":"webcal://example.org/a.ics"}})", u"example.org"_s);
}

void tst_KelpProbe::writesTexts()
{
    QFETCH(QByteArray, call);
    QFETCH(QString, text);
    const Outcome outcome = probe({u"text"_s}, call.replace('\n', ' ') + "\n");
    QCOMPARE(outcome.status, 0);
    QCOMPARE(QJsonDocument::fromJson(outcome.output).object().value("text"_L1).toString(), text);
}

void tst_KelpProbe::writesChimes()
{
    const Outcome list = probe({u"chime"_s, u"--list"_s}, {});
    QCOMPARE(list.status, 0);
    QCOMPARE(list.output, "Chime\nBells\nDoorbell\nMarimba\nHarp\nCrystal\nSinging bowl\nArcade\n"_ba);
    for (const QByteArray &name : list.output.trimmed().split('\n')) {
        const Outcome chime = probe({u"chime"_s, QString::fromUtf8(name)}, {});
        QCOMPARE(chime.status, 0);
        QCOMPARE(chime.error, QByteArray());
        QCOMPARE(chime.output.left(4), "RIFF"_ba);
        QCOMPARE(qFromLittleEndian<quint32>(chime.output.constData() + 4),
                 static_cast<quint32>(chime.output.size() - 8));
    }
    QCOMPARE(probe({u"chime"_s, u"Chime"_s}, {}).output.size(), 44 + 2 * 247401);
}

void tst_KelpProbe::refusesBadInputAndBadUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("status");
    QTest::newRow("meetings: html") << QStringList{u"meetings"_s} << QByteArray("<html>") << 1;
    QTest::newRow("schedule: no JSON") << QStringList{u"schedule"_s} << QByteArray("x") << 1;
    QTest::newRow("schedule: no step") << QStringList{u"schedule"_s} << QByteArray(R"({"from": 1, "to": 2})") << 1;
    QTest::newRow("schedule: step 0") << QStringList{u"schedule"_s} << QByteArray(R"({"from": 1, "to": 2, "step": 0})")
                                      << 1;
    QTest::newRow("schedule: unknown action")
        << QStringList{u"schedule"_s}
        << QByteArray(R"({"from": 1, "to": 2, "step": 1, "actions": [{"at": 1, "do": "x"}]})") << 1;
    QTest::newRow("text: unknown function") << QStringList{u"text"_s} << QByteArray(R"({"fn": "x"})") << 1;
    QTest::newRow("text: no JSON") << QStringList{u"text"_s} << QByteArray("x") << 1;
    QTest::newRow("hotkey: no JSON") << QStringList{u"hotkey"_s} << QByteArray("x") << 1;
    QTest::newRow("hotkey: no time") << QStringList{u"hotkey"_s} << QByteArray(R"({"key": "/"})") << 1;
    QTest::newRow("hotkey: no key") << QStringList{u"hotkey"_s} << QByteArray(R"({"t": 1})") << 1;
    QTest::newRow("hotkey of what") << QStringList{u"hotkey"_s, u"x"_s} << QByteArray() << 2;
    QTest::newRow("chime: unknown name") << QStringList{u"chime"_s, u"bells"_s} << QByteArray() << 1;
    QTest::newRow("chime without a name") << QStringList{u"chime"_s} << QByteArray() << 2;
    QTest::newRow("chime with two names") << QStringList{u"chime"_s, u"Bells"_s, u"Harp"_s} << QByteArray() << 2;
    QTest::newRow("nothing") << QStringList{} << QByteArray() << 2;
    QTest::newRow("unknown command") << QStringList{u"x"_s} << QByteArray() << 2;
    QTest::newRow("spotify-uri of what") << QStringList{u"spotify-uri"_s, u"x"_s} << QByteArray() << 2;
    QTest::newRow("decode what") << QStringList{u"decode"_s} << QByteArray() << 2;
    QTest::newRow("decode other") << QStringList{u"decode"_s, u"x"_s} << QByteArray() << 2;
    QTest::newRow("loopback without state") << QStringList{u"loopback"_s} << QByteArray() << 2;
    QTest::newRow("meetings with a name only") << QStringList{u"meetings"_s, u"x"_s} << QByteArray("{}") << 2;
}

void tst_KelpProbe::refusesBadInputAndBadUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    QFETCH(int, status);
    const Outcome outcome = probe(arguments, input);
    QCOMPARE(outcome.status, status);
    QVERIFY(outcome.output.isEmpty());
    if (status == 1)
        QCOMPARE(outcome.error.count('\n'), 1);
    else
        QVERIFY(outcome.error.startsWith("Usage:"));
}

QTEST_GUILESS_MAIN(tst_KelpProbe)
#include "tst_KelpProbe.moc"
