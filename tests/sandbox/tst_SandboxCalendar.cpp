#include "SandboxFixture.h"

#include <QJsonArray>
#include <QTest>

#include <memory>

using namespace kelp::test;
using namespace Qt::StringLiterals;

class tst_SandboxCalendar : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void wantsAValidToken_data();
    void wantsAValidToken();
    void letsNobodyWrite();
    void listsTheCalendarsOfTheRole_data();
    void listsTheCalendarsOfTheRole();
    void listsCalendarsInGooglesForm();
    void showsOneCalendar();
    void knowsNoOtherCalendars_data();
    void knowsNoOtherCalendars();
    void givesTheEventsOfTheWindow_data();
    void givesTheEventsOfTheWindow();
    void sortsByStart();
    void cutsIntoPages();
    void expandsRepeatedEvents();
    void showsRepeatedEventsOnce();
    void completesEvents();
    void passesOddTimesThrough();
    void writesTimesInTheZoneOfTheCalendar();
    void refusesQueries_data();
    void refusesQueries();
    void refusesSeeds_data();
    void refusesSeeds();

private:
    [[nodiscard]] HttpExchange events(const QString &query) const;
    [[nodiscard]] QStringList ids(const QString &query) const;

    std::unique_ptr<SandboxFixture> m_fixture;
    QByteArray m_token;
};

namespace {

const QString calendarId = u"a@example.com"_s;

QJsonObject seededEvent(const QString &id, const QString &start, const QString &end)
{
    return {{u"id"_s, id}, {u"start"_s, start}, {u"end"_s, end}};
}

QStringList idsOf(const QJsonObject &list)
{
    QStringList found;
    for (const QJsonValue &item : list[u"items"_s].toArray())
        found.append(item[u"id"_s].toString());
    return found;
}

} // namespace

void tst_SandboxCalendar::initTestCase()
{
    m_fixture = std::make_unique<SandboxFixture>();
    QVERIFY2(m_fixture->start(), qPrintable(m_fixture->sandbox.error()));
    m_token = m_fixture->accessToken();
    QVERIFY(!m_token.isEmpty());
}

void tst_SandboxCalendar::init()
{
    const QJsonArray seeded{seededEvent(u"late"_s, u"2026-03-02T15:00:00Z"_s, u"2026-03-02T16:00:00Z"_s),
                            seededEvent(u"early"_s, u"2026-03-02T10:00:00+01:00"_s, u"2026-03-02T11:00:00+01:00"_s),
                            seededEvent(u"noon"_s, u"2026-03-02T12:00:00Z"_s, u"2026-03-02T13:00:00Z"_s)};
    QVERIFY(m_fixture->sandbox.replaceEvents(calendarId, calendarId, seeded));
}

HttpExchange tst_SandboxCalendar::events(const QString &query) const
{
    return m_fixture->get(u"/calendars/a@example.com/events?"_s + query, m_token);
}

QStringList tst_SandboxCalendar::ids(const QString &query) const
{
    const HttpExchange answer = events(query);
    return answer.status == 200 ? idsOf(jsonBody(answer)) : QStringList{QString::number(answer.status)};
}

void tst_SandboxCalendar::wantsAValidToken_data()
{
    QTest::addColumn<QByteArray>("authorization");
    QTest::newRow("none") << QByteArray();
    QTest::newRow("unknown") << QByteArray("Bearer ya29.unknown");
    QTest::newRow("empty") << QByteArray("Bearer ");
    QTest::newRow("another scheme") << QByteArray("Basic " + QByteArray("a:b").toBase64());
}

void tst_SandboxCalendar::wantsAValidToken()
{
    QFETCH(QByteArray, authorization);
    QList<HttpExchange::Header> headers;
    if (!authorization.isEmpty())
        headers.emplaceBack("Authorization", authorization);
    for (const QString &path : {u"/users/me/calendarList"_s, u"/calendars/primary"_s, u"/calendars/primary/events"_s}) {
        const HttpExchange answer =
            HttpExchange::send("GET", m_fixture->sandbox.url(u"/calendar/v3"_s + path), headers);
        QCOMPARE(answer.status, 401);
        const QJsonObject error = jsonBody(answer)[u"error"_s].toObject();
        QCOMPARE(error[u"code"_s], 401);
        QCOMPARE(error[u"status"_s], u"UNAUTHENTICATED"_s);
        QVERIFY(!error[u"message"_s].toString().isEmpty());
        QCOMPARE(error[u"errors"_s].toArray().size(), 1);
    }
}

void tst_SandboxCalendar::letsNobodyWrite()
{
    const QUrl url = m_fixture->sandbox.url(u"/calendar/v3/calendars/primary/events"_s);
    QCOMPARE(HttpExchange::send("POST", url, {{"Authorization", "Bearer " + m_token}}, "{}").status, 403);
    QCOMPARE(HttpExchange::send("DELETE", url, {{"Authorization", "Bearer " + m_token}}).status, 403);
}

void tst_SandboxCalendar::listsTheCalendarsOfTheRole_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QStringList>("ids");
    const QString a = calendarId;
    const QString holiday = u"en#holiday@group"_s;
    QTest::newRow("all") << QString() << QStringList{a, holiday, u"write"_s, u"busy"_s};
    QTest::newRow("freeBusyReader") << u"?minAccessRole=freeBusyReader"_s
                                    << QStringList{a, holiday, u"write"_s, u"busy"_s};
    QTest::newRow("reader") << u"?minAccessRole=reader"_s << QStringList{a, holiday, u"write"_s};
    QTest::newRow("writer") << u"?minAccessRole=writer"_s << QStringList{a, u"write"_s};
    QTest::newRow("owner") << u"?minAccessRole=owner"_s << QStringList{a};
    QTest::newRow("page") << u"?maxResults=1"_s << QStringList{a};
}

void tst_SandboxCalendar::listsTheCalendarsOfTheRole()
{
    QFETCH(QString, query);
    QFETCH(QStringList, ids);
    const HttpExchange answer = m_fixture->get(u"/users/me/calendarList"_s + query, m_token);
    QCOMPARE(answer.status, 200);
    QCOMPARE(idsOf(jsonBody(answer)), ids);
    QCOMPARE(m_fixture->get(u"/users/me/calendarList?minAccessRole=boss"_s, m_token).status, 400);
}

void tst_SandboxCalendar::listsCalendarsInGooglesForm()
{
    const QJsonObject list = jsonBody(m_fixture->get(u"/users/me/calendarList"_s, m_token));
    QCOMPARE(list[u"kind"_s], u"calendar#calendarList"_s);
    QVERIFY(list.contains(u"etag"_s) && list.contains(u"nextSyncToken"_s));
    const QJsonObject first = list[u"items"_s][0].toObject();
    QCOMPARE(first[u"primary"_s], true);
    QCOMPARE(first[u"selected"_s], true);
    QCOMPARE(first[u"summary"_s], u"Ada"_s);
    QCOMPARE(first[u"backgroundColor"_s], u"#112233"_s);
    QVERIFY(!first.contains(u"events"_s));
    const QJsonObject second = list[u"items"_s][1].toObject();
    QVERIFY(!second.contains(u"primary"_s) && !second.contains(u"selected"_s));
    QCOMPARE(second[u"accessRole"_s], u"reader"_s);
}

void tst_SandboxCalendar::showsOneCalendar()
{
    for (const QString &path :
         {u"/calendars/primary"_s, u"/calendars/a@example.com"_s, u"/calendars/a%40example.com"_s}) {
        const QJsonObject calendar = jsonBody(m_fixture->get(path, m_token));
        QCOMPARE(calendar[u"id"_s], calendarId);
        QCOMPARE(calendar[u"kind"_s], u"calendar#calendar"_s);
    }
    QCOMPARE(jsonBody(m_fixture->get(u"/calendars/en%23holiday@group"_s, m_token))[u"id"_s], u"en#holiday@group"_s);
    QCOMPARE(m_fixture->get(u"/calendars/primary/events"_s, m_token).status, 200);
}

void tst_SandboxCalendar::knowsNoOtherCalendars_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("calendar") << u"/calendars/other"_s;
    QTest::newRow("its events") << u"/calendars/other/events"_s;
    QTest::newRow("another account's") << u"/calendars/b@example.com/events"_s;
    QTest::newRow("encoded twice") << u"/calendars/en%2523holiday@group/events"_s;
}

void tst_SandboxCalendar::knowsNoOtherCalendars()
{
    QFETCH(QString, path);
    const HttpExchange answer = m_fixture->get(path, m_token);
    QCOMPARE(answer.status, 404);
    QCOMPARE(jsonBody(answer)[u"error"_s][u"message"_s], u"Not Found"_s);
}

void tst_SandboxCalendar::givesTheEventsOfTheWindow_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QStringList>("expected");
    const QString early = u"early"_s;
    const QString noon = u"noon"_s;
    const QString late = u"late"_s;
    QTest::newRow("all") << QString() << QStringList{late, early, noon};
    QTest::newRow("ends exactly at timeMin") << u"timeMin=2026-03-02T10:00:00Z"_s << QStringList{late, noon};
    QTest::newRow("ends just after timeMin") << u"timeMin=2026-03-02T09:59:59Z"_s << QStringList{late, early, noon};
    QTest::newRow("starts exactly at timeMax") << u"timeMax=2026-03-02T15:00:00Z"_s << QStringList{early, noon};
    QTest::newRow("starts just before timeMax") << u"timeMax=2026-03-02T15:00:01Z"_s << QStringList{late, early, noon};
    QTest::newRow("both, with an offset")
        << u"timeMin=2026-03-02T12:30:00%2B01:00&timeMax=2026-03-02T13:30:00.5%2B01:00"_s << QStringList{noon};
    QTest::newRow("nothing") << u"timeMin=2026-03-03T00:00:00Z"_s << QStringList{};
}

void tst_SandboxCalendar::givesTheEventsOfTheWindow()
{
    QFETCH(QString, query);
    QFETCH(QStringList, expected);
    QCOMPARE(ids(query), expected);
    QCOMPARE(ids(query + u"&singleEvents=true"_s), expected);
}

void tst_SandboxCalendar::sortsByStart()
{
    QCOMPARE(ids(u"singleEvents=true&orderBy=startTime"_s), (QStringList{u"early"_s, u"noon"_s, u"late"_s}));
}

void tst_SandboxCalendar::cutsIntoPages()
{
    const QString query = u"singleEvents=true&orderBy=startTime&maxResults=2"_s;
    const QJsonObject first = jsonBody(events(query));
    QCOMPARE(idsOf(first), (QStringList{u"early"_s, u"noon"_s}));
    QVERIFY(!first.contains(u"nextSyncToken"_s));
    const QString token = first[u"nextPageToken"_s].toString();
    QVERIFY(!token.isEmpty());
    const QJsonObject second = jsonBody(events(query + u"&pageToken="_s + token));
    QCOMPARE(idsOf(second), QStringList{u"late"_s});
    QVERIFY(!second.contains(u"nextPageToken"_s));
    QVERIFY(second.contains(u"nextSyncToken"_s));

    QJsonArray many;
    for (int i = 0; i < 251; ++i)
        many.append(QJsonObject{{u"startsIn"_s, i * 60}});
    QVERIFY(m_fixture->sandbox.replaceEvents(calendarId, calendarId, many));
    QCOMPARE(ids({}).size(), 250);
    QCOMPARE(ids(u"maxResults=5000"_s).size(), 251);
}

void tst_SandboxCalendar::expandsRepeatedEvents()
{
    QJsonObject series = seededEvent(u"series"_s, u"2026-03-02T09:00:00Z"_s, u"2026-03-02T09:30:00Z"_s);
    series[u"repeats"_s] = QJsonObject{{u"every"_s, u"daily"_s}, {u"count"_s, 5}};
    QJsonObject endless{
        {u"id"_s, u"days"_s}, {u"date"_s, u"2026-03-02"_s}, {u"repeats"_s, QJsonObject{{u"every"_s, u"weekly"_s}}}};
    QVERIFY(m_fixture->sandbox.replaceEvents(calendarId, calendarId, {series, endless}));

    const QString query =
        u"singleEvents=true&orderBy=startTime&timeMin=2026-03-03T09:30:00Z&timeMax=2026-03-09T00:00:01Z"_s;
    const QJsonObject list = jsonBody(events(query));
    QCOMPARE(idsOf(list), (QStringList{u"series_20260304T090000Z"_s, u"series_20260305T090000Z"_s,
                                       u"series_20260306T090000Z"_s, u"days_20260309"_s}));
    const QJsonObject instance = list[u"items"_s][0].toObject();
    QCOMPARE(instance[u"recurringEventId"_s], u"series"_s);
    QCOMPARE(instance[u"iCalUID"_s], u"series@google.com"_s);
    QCOMPARE(instance[u"start"_s][u"dateTime"_s], u"2026-03-04T09:00:00Z"_s);
    QCOMPARE(instance[u"end"_s][u"dateTime"_s], u"2026-03-04T09:30:00Z"_s);
    QCOMPARE(instance[u"originalStartTime"_s], instance[u"start"_s]);
    QVERIFY(!instance.contains(u"recurrence"_s));
    QCOMPARE(list[u"items"_s][3][u"end"_s][u"date"_s], u"2026-03-10"_s);
    QCOMPARE(ids(u"singleEvents=true&timeMin=2026-03-20T00:00:00Z&timeMax=2026-03-21T00:00:00Z"_s), QStringList{});
}

void tst_SandboxCalendar::showsRepeatedEventsOnce()
{
    QJsonObject series = seededEvent(u"series"_s, u"2026-03-02T09:00:00Z"_s, u"2026-03-02T09:30:00Z"_s);
    series[u"repeats"_s] = QJsonObject{{u"every"_s, 7200}, {u"count"_s, 3}};
    QVERIFY(m_fixture->sandbox.replaceEvents(calendarId, calendarId, {series}));
    const QJsonObject list = jsonBody(events(u"timeMin=2026-03-02T11:00:00Z"_s));
    QCOMPARE(idsOf(list), QStringList{u"series"_s});
    QCOMPARE(list[u"items"_s][0][u"recurrence"_s], (QJsonArray{u"RRULE:FREQ=HOURLY;INTERVAL=2;COUNT=3"_s}));
    QCOMPARE(ids(u"timeMin=2026-03-02T13:30:00Z"_s), QStringList{});
}

void tst_SandboxCalendar::completesEvents()
{
    const QJsonArray attendees{QJsonObject{{u"email"_s, calendarId}}, QJsonObject{{u"email"_s, u"x@example.com"_s}}};
    const QJsonObject seeded{{u"startsIn"_s, 65},
                             {u"lasts"_s, 600},
                             {u"summary"_s, u"Tea"_s},
                             {u"status"_s, u"tentative"_s},
                             {u"iCalUID"_s, QJsonValue::Null},
                             {u"attendees"_s, attendees},
                             {u"x"_s, QJsonObject{{u"y"_s, 1}}}};
    const auto before = QDateTime::currentSecsSinceEpoch();
    QVERIFY(m_fixture->sandbox.replaceEvents(calendarId, u"primary"_s, {seeded}));
    const auto after = QDateTime::currentSecsSinceEpoch();
    const QJsonObject got = jsonBody(events({}))[u"items"_s][0].toObject();
    for (const QString &name :
         {u"kind"_s, u"etag"_s, u"id"_s, u"htmlLink"_s, u"created"_s, u"updated"_s, u"creator"_s, u"organizer"_s})
        QVERIFY2(got.contains(name), qPrintable(name));
    QCOMPARE(got[u"summary"_s], u"Tea"_s);
    QCOMPARE(got[u"status"_s], u"tentative"_s);
    QCOMPARE(got[u"eventType"_s], u"default"_s);
    QVERIFY(got[u"iCalUID"_s].isNull());
    QCOMPARE(got[u"x"_s], (QJsonObject{{u"y"_s, 1}}));
    QVERIFY(!got.contains(u"startsIn"_s) && !got.contains(u"lasts"_s));
    QCOMPARE(got[u"attendees"_s][0][u"self"_s], true);
    QVERIFY(got[u"attendees"_s][1][u"self"_s].isUndefined());
    const qint64 start =
        QDateTime::fromString(got[u"start"_s][u"dateTime"_s].toString(), Qt::ISODate).toSecsSinceEpoch();
    const qint64 end = QDateTime::fromString(got[u"end"_s][u"dateTime"_s].toString(), Qt::ISODate).toSecsSinceEpoch();
    QVERIFY(start >= before + 65 && start <= after + 65);
    QCOMPARE(end - start, 600);
}

void tst_SandboxCalendar::passesOddTimesThrough()
{
    const QJsonObject noOffset{
        {u"id"_s, u"odd"_s}, {u"start"_s, QJsonObject{{u"dateTime"_s, u"2026-01-01T09:00:00"_s}}}, {u"end"_s, 5}};
    const QJsonObject none{{u"id"_s, u"none"_s}};
    QVERIFY(m_fixture->sandbox.replaceEvents(calendarId, calendarId, {noOffset, none}));
    const QJsonObject list = jsonBody(events(u"singleEvents=true&orderBy=startTime&timeMin=2030-01-01T00:00:00Z"_s));
    QCOMPARE(idsOf(list), (QStringList{u"odd"_s, u"none"_s}));
    QCOMPARE(list[u"items"_s][0][u"start"_s], noOffset[u"start"_s]);
    QCOMPARE(list[u"items"_s][0][u"end"_s], 5);
    QVERIFY(list[u"items"_s][1][u"start"_s].isUndefined());
}

void tst_SandboxCalendar::writesTimesInTheZoneOfTheCalendar()
{
    QJsonObject account{{u"email"_s, u"c@example.com"_s}, {u"refreshToken"_s, u"1//c"_s}};
    const QJsonObject series{{u"id"_s, u"s"_s},
                             {u"start"_s, u"2026-03-27T09:00:00Z"_s},
                             {u"lasts"_s, 600},
                             {u"repeats"_s, QJsonObject{{u"every"_s, u"daily"_s}, {u"count"_s, 3}}}};
    const QJsonObject day{{u"id"_s, u"d"_s}, {u"date"_s, u"2026-03-29"_s}};
    account[u"calendars"_s] = QJsonArray{
        QJsonObject{{u"primary"_s, true}, {u"timeZone"_s, u"Europe/Berlin"_s}, {u"events"_s, QJsonArray{series, day}}}};
    SandboxFixture fixture;
    QVERIFY(fixture.start({{u"accounts"_s, QJsonArray{account}}}));
    const QByteArray token =
        jsonBody(fixture.token(SandboxFixture::refreshItems(u"1//c"_s)))[u"access_token"_s].toString().toUtf8();
    // The day on which summer time begins has 23 hours: 23:00Z to 22:00Z.
    const QString query =
        u"/calendars/primary/events?singleEvents=true&orderBy=startTime&timeMin=2026-03-28T23:00:00Z"_s;
    const QJsonObject list = jsonBody(fixture.get(query, token));
    QCOMPARE(idsOf(list), (QStringList{u"d"_s, u"s_20260329T090000Z"_s}));
    QCOMPARE(list[u"items"_s][1][u"start"_s][u"dateTime"_s], u"2026-03-29T11:00:00+02:00"_s);
    QCOMPARE(list[u"items"_s][1][u"start"_s][u"timeZone"_s], u"Europe/Berlin"_s);
    QCOMPARE(idsOf(jsonBody(fixture.get(u"/calendars/primary/events?timeMin=2026-03-29T22:00:00Z"_s, token))),
             QStringList{});
}

void tst_SandboxCalendar::refusesQueries_data()
{
    QTest::addColumn<QString>("query");
    QTest::newRow("order without expansion") << u"orderBy=startTime"_s;
    QTest::newRow("unknown order") << u"singleEvents=true&orderBy=endTime"_s;
    QTest::newRow("time without offset") << u"timeMin=2026-03-02T10:00:00"_s;
    QTest::newRow("unencoded plus") << u"timeMin=2026-03-02T10:00:00+01:00"_s;
    QTest::newRow("date only") << u"timeMax=2026-03-02"_s;
    QTest::newRow("empty time") << u"timeMax="_s;
    QTest::newRow("empty range") << u"timeMin=2026-03-02T10:00:00Z&timeMax=2026-03-02T10:00:00Z"_s;
    QTest::newRow("zero results") << u"maxResults=0"_s;
    QTest::newRow("many results") << u"maxResults=many"_s;
    QTest::newRow("odd flag") << u"singleEvents=True"_s;
    QTest::newRow("unknown page") << u"pageToken=abc"_s;
    QTest::newRow("broken escape") << u"maxResults=%5"_s;
}

void tst_SandboxCalendar::refusesQueries()
{
    QFETCH(QString, query);
    QUrl url = m_fixture->sandbox.url(u"/calendar/v3/calendars/primary/events"_s);
    QByteArray request = httpRequest("GET", url, {{"Authorization", "Bearer " + m_token}});
    request.replace("/events ", "/events?" + query.toLatin1() + ' ');
    const HttpExchange answer = HttpExchange::sendRaw(url, request);
    QCOMPARE(answer.status, 400);
    if (!query.endsWith(u'5'))
        QCOMPARE(jsonBody(answer)[u"error"_s][u"code"_s], 400);
}

void tst_SandboxCalendar::refusesSeeds_data()
{
    QTest::addColumn<QJsonObject>("seed");
    const auto withEvent = [](const QJsonObject &json) {
        const QJsonObject calendar{{u"events"_s, QJsonArray{json}}};
        return QJsonObject{
            {u"accounts"_s, QJsonArray{QJsonObject{{u"email"_s, u"a@x"_s}, {u"calendars"_s, QJsonArray{calendar}}}}}};
    };
    QTest::newRow("unknown member") << QJsonObject{{u"acounts"_s, QJsonArray{}}};
    QTest::newRow("account without e-mail") << QJsonObject{{u"accounts"_s, QJsonArray{QJsonObject{}}}};
    QTest::newRow("odd time") << withEvent({{u"start"_s, u"tomorrow"_s}});
    QTest::newRow("odd relative time") << withEvent({{u"startsIn"_s, u"5"_s}});
    QTest::newRow("two times") << withEvent({{u"startsIn"_s, 5}, {u"date"_s, 0}});
    QTest::newRow("odd date") << withEvent({{u"date"_s, u"2026-02-30"_s}});
    QTest::newRow("repetition without time") << withEvent({{u"repeats"_s, QJsonObject{{u"every"_s, 60}}}});
    QTest::newRow("repetition at once") << withEvent(
        {{u"startsIn"_s, 5}, {u"repeats"_s, QJsonObject{{u"every"_s, 0}}}});
    QTest::newRow("fault") << QJsonObject{{u"faults"_s, QJsonArray{QJsonObject{{u"kind"_s, u"odd"_s}}}}};
}

void tst_SandboxCalendar::refusesSeeds()
{
    QFETCH(QJsonObject, seed);
    Sandbox sandbox;
    QVERIFY(!sandbox.start(seed));
    QVERIFY2(sandbox.error().startsWith(u"kelp-sandbox: "), qPrintable(sandbox.error()));
}

QTEST_GUILESS_MAIN(tst_SandboxCalendar)
#include "tst_SandboxCalendar.moc"
