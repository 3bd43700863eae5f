#include "calendar/CalendarClient.h"

#include "calendar/CalendarError.h"
#include "support/FakeAccounts.h"
#include "support/FakeClock.h"
#include "support/FakeHttpClient.h"

#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

const QByteArray oneCalendar = R"({"items": [{"id": "a@x", "primary": true, "summary": "Ada"}]})";

QByteArray events(const QByteArray &uid, const QByteArray &start = "2026-01-01T10:00:00Z")
{
    return R"({"items": [{"iCalUID": ")" + uid + R"(", "summary": "M", "start": {"dateTime": ")" + start +
           R"("}, "end": {"dateTime": "2026-01-01T11:00:00Z"}}]})";
}

} // namespace

class tst_CalendarClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void readsNothingWithoutAccounts();
    void asksForTheCalendarsAndThenForTheEventsOfEach();
    void sendsEachRequestWithAToken();
    void encodesCalendarIdentifiers_data();
    void encodesCalendarIdentifiers();
    void sortsCalendarsPrimaryFirstThenByName();
    void namesCalendarsAsTheUserDoes();
    void listsDisabledCalendarsWithoutReadingThem();
    void keepsAnEventOfTwoCalendarsOnceAsSeenLast();
    void sortsMeetingsByStart();
    void retriesOnceWithANewTokenAfter401();
    void givesUpAfterTheSecond401();
    void repairsTheNameOfAnAccount();
    void reportsOneLinePerAccountThatFailed();
    void failsTheWholeAccountWhenOneCalendarFails();
    void tellsTransientErrorsFromLastingOnes_data();
    void tellsTransientErrorsFromLastingOnes();
    void saysWhatGoogleSaid_data();
    void saysWhatGoogleSaid();
    void forgetsAFetchWhoseOwnerIsGone();

private:
    void fetch(MeetingSource::CalendarFilter isEnabled = [](const CalendarInfo &) { return true; })
    {
        client->fetch(24, std::move(isEnabled), context.get(),
                      [this](const FetchResult &fetched) { result = fetched; });
    }

    std::unique_ptr<FakeClock> clock;
    std::unique_ptr<FakeHttpClient> http;
    std::unique_ptr<FakeAccounts> accounts;
    std::unique_ptr<CalendarClient> client;
    std::unique_ptr<QObject> context;
    std::optional<FetchResult> result;
};

void tst_CalendarClient::init()
{
    clock = std::make_unique<FakeClock>();
    http = std::make_unique<FakeHttpClient>();
    accounts = std::make_unique<FakeAccounts>();
    accounts->list = {{u"a@x"_s, u"refresh"_s}};
    client = std::make_unique<CalendarClient>(*accounts, *http, *clock, u"http://api/calendar/v3"_s);
    context = std::make_unique<QObject>();
    result.reset();
}

void tst_CalendarClient::readsNothingWithoutAccounts()
{
    accounts->list.clear();
    fetch();
    QVERIFY(result);
    QVERIFY(result->calendars.isEmpty() && result->meetings.isEmpty() && result->errors.isEmpty());
    QVERIFY(http->sent().isEmpty());
}

void tst_CalendarClient::asksForTheCalendarsAndThenForTheEventsOfEach()
{
    fetch();
    QCOMPARE(http->sent().last().method, "GET");
    QCOMPARE(http->sent().last().url.toEncoded(), "http://api/calendar/v3/users/me/calendarList?minAccessRole=reader");
    http->answer(200, R"({"items": [{"id": "a@x", "primary": true}, {"id": "b"}]})");
    QCOMPARE(http->open(), 1); // one after the other
    QCOMPARE(http->sent().last().url.toEncoded(),
             "http://api/calendar/v3/calendars/a@x/events?timeMin=2026-01-01T08:00:00Z&timeMax=2026-01-02T09:00:00Z"
             "&singleEvents=true&orderBy=startTime&maxResults=150");
    http->answer(200, events("one"));
    QCOMPARE(http->sent().last().url.path(), u"/calendar/v3/calendars/b/events"_s);
    QVERIFY(!result);
    http->answer(200, events("two"));
    QVERIFY(result);
    QCOMPARE(result->meetings.size(), 2);
    QCOMPARE(result->meetings.first().calendarID, u"a@x|a@x"_s);
    QCOMPARE(result->meetings.first().calendarName, u"a@x"_s);
    QCOMPARE(http->sent().size(), 3);
}

void tst_CalendarClient::sendsEachRequestWithAToken()
{
    fetch();
    http->answer(200, oneCalendar);
    for (const HttpRequest &request : http->sent()) {
        QCOMPARE(request.headers.size(), 1);
        QCOMPARE(request.headers.first().first, "Authorization");
        QCOMPARE(request.headers.first().second, "Bearer token-1");
    }
}

void tst_CalendarClient::encodesCalendarIdentifiers_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<QByteArray>("encoded");
    QTest::newRow("address") << QByteArray("ada-1.b_c~@x.org") << QByteArray("ada-1.b_c~@x.org");
    QTest::newRow("holidays") << QByteArray("en.german#holiday@group.v.calendar.google.com")
                              << QByteArray("en.german%23holiday@group.v.calendar.google.com");
    QTest::newRow("slashes") << QByteArray("a/b?c&d=e f+g:h") << QByteArray("a%2Fb%3Fc%26d%3De%20f%2Bg%3Ah");
    QTest::newRow("beyond ASCII") << QByteArray("é") << QByteArray("%C3%A9");
}

void tst_CalendarClient::encodesCalendarIdentifiers()
{
    QFETCH(QByteArray, id);
    QFETCH(QByteArray, encoded);
    fetch();
    http->answer(200, R"({"items": [{"id": ")" + id + R"("}]})");
    QVERIFY2(http->sent().last().url.toEncoded().contains("/calendars/" + encoded + "/events?"),
             http->sent().last().url.toEncoded().constData());
}

void tst_CalendarClient::sortsCalendarsPrimaryFirstThenByName()
{
    fetch([](const CalendarInfo &) { return false; });
    http->answer(200, R"({"items": [{"id": "1", "summary": "work"}, {"id": "a@x", "summary": "Zoe", "primary": true},
        {"id": "2", "summary": "Alpha"},
        {"id": "3", "summary": "beta"}, {"id": "4", "summary": "\ud83d\ude00"}, {"id": "5", "summary": "\uff5e"}]})");
    QStringList names;
    for (const CalendarInfo &calendar : result->calendars)
        names.append(calendar.name);
    // By code points: U+FF5E comes before U+1F600, although its code unit is greater.
    QCOMPARE(names, QStringList({u"Zoe"_s, u"Alpha"_s, u"beta"_s, u"work"_s, u"\uff5e"_s, u"\U0001f600"_s}));
}

void tst_CalendarClient::namesCalendarsAsTheUserDoes()
{
    fetch([](const CalendarInfo &) { return false; });
    http->answer(200, R"({"items": [{"id": "1", "summary": "s", "summaryOverride": "o", "selected": true,
        "backgroundColor": "#123456"}, {"id": "2", "summary": "t"}, {"id": "3"}]})");
    const CalendarInfo expected{.googleID = u"1"_s,
                                .accountEmail = u"a@x"_s,
                                .name = u"o"_s,
                                .isPrimary = false,
                                .googleSelected = true,
                                .color = u"#123456"_s};
    const auto calendars = result->calendars;
    QCOMPARE(calendars.size(), 3);
    QCOMPARE(calendars[0].name, u"3"_s);
    QVERIFY(calendars[1] == expected);
    QCOMPARE(calendars[1].key(), u"a@x|1"_s);
    QCOMPARE(calendars[2].name, u"t"_s);
}

void tst_CalendarClient::listsDisabledCalendarsWithoutReadingThem()
{
    fetch([](const CalendarInfo &calendar) { return calendar.googleID != u"off"; });
    http->answer(200, R"({"items": [{"id": "off"}, {"id": "on"}]})");
    http->answer(200, events("one"));
    QCOMPARE(result->calendars.size(), 2);
    QCOMPARE(result->meetings.size(), 1);
    QCOMPARE(http->sent().size(), 2);
}

void tst_CalendarClient::keepsAnEventOfTwoCalendarsOnceAsSeenLast()
{
    fetch();
    http->answer(200, R"({"items": [{"id": "1"}, {"id": "2"}]})");
    http->answer(200, events("same"));
    http->answer(200, events("same"));
    QCOMPARE(result->meetings.size(), 1);
    QCOMPARE(result->meetings.first().calendarID, u"a@x|2"_s);
}

void tst_CalendarClient::sortsMeetingsByStart()
{
    fetch();
    http->answer(200, R"({"items": [{"id": "1"}, {"id": "2"}]})");
    http->answer(200, events("later", "2026-01-01T10:30:00Z"));
    http->answer(200, events("earlier", "2026-01-01T09:30:00Z"));
    QCOMPARE(result->meetings.first().id, u"earlier|1767259800.0"_s);
}

void tst_CalendarClient::retriesOnceWithANewTokenAfter401()
{
    fetch();
    http->answer(401, "{}");
    QCOMPARE(accounts->asked, QStringList({u"a@x"_s, u"a@x forced"_s}));
    QCOMPARE(http->sent().last().headers.first().second, "Bearer token-2");
    http->answer(200, oneCalendar);
    http->answer(200, events("one"));
    QVERIFY(result->errors.isEmpty());
    QCOMPARE(result->meetings.size(), 1);
}

void tst_CalendarClient::givesUpAfterTheSecond401()
{
    fetch();
    http->answer(401, "{}");
    http->answer(401, "no");
    QCOMPARE(result->errors, QStringList{u"a@x: Google Calendar error 401: no"_s});
    QCOMPARE(http->sent().size(), 2);
}

void tst_CalendarClient::repairsTheNameOfAnAccount()
{
    accounts->list = {{u"Google account"_s, u"refresh"_s}};
    fetch();
    http->answer(200, R"({"items": [{"id": "other"}, {"id": "ada@x", "primary": true}]})");
    http->answer(200, events("one"));
    QCOMPARE(accounts->renames, QStringList{u"Google account → ada@x"_s});
    QCOMPARE(accounts->asked.last(), u"ada@x"_s);
    http->answer(500, "");
    QCOMPARE(result->errors, QStringList{u"ada@x: Google Calendar error 500: "_s});
}

void tst_CalendarClient::reportsOneLinePerAccountThatFailed()
{
    accounts->list = {{u"a@x"_s, u"1"_s}, {u"b@x"_s, u"2"_s}, {u"c@x"_s, u"3"_s}};
    fetch();
    http->answer(403, R"({"error": {"message": "Rate Limit Exceeded"}})");
    http->answer(200, R"({"items": [{"id": "b@x", "primary": true}]})");
    http->answer(200, events("one"));
    http->fail(HttpError::Kind::transport, u"Connection refused"_s);
    QCOMPARE(result->errors,
             QStringList({u"a@x: Google Calendar error 403: Rate Limit Exceeded"_s, u"c@x: Connection refused"_s}));
    QCOMPARE(result->calendars.size(), 1);
    QCOMPARE(result->meetings.size(), 1);
    QVERIFY(!result->errorsAreTransient);
}

void tst_CalendarClient::failsTheWholeAccountWhenOneCalendarFails()
{
    fetch();
    http->answer(200, R"({"items": [{"id": "1"}, {"id": "2"}]})");
    http->answer(200, events("one"));
    http->answer(200, "<html>");
    QVERIFY(result->calendars.isEmpty());
    QVERIFY(result->meetings.isEmpty());
    QCOMPARE(result->errors.size(), 1);
}

void tst_CalendarClient::tellsTransientErrorsFromLastingOnes_data()
{
    QTest::addColumn<int>("status"); // 0: transport, -1: too large
    QTest::addColumn<bool>("transient");
    QTest::newRow("transport") << 0 << true;
    QTest::newRow("too large") << -1 << false;
    QTest::newRow("500") << 500 << true;
    QTest::newRow("503") << 503 << true;
    QTest::newRow("403") << 403 << false;
    QTest::newRow("302") << 302 << false;
}

void tst_CalendarClient::tellsTransientErrorsFromLastingOnes()
{
    QFETCH(int, status);
    QFETCH(bool, transient);
    fetch();
    if (status > 0)
        http->answer(status, "");
    else
        http->fail(status == 0 ? HttpError::Kind::transport : HttpError::Kind::tooLarge, u"x"_s);
    QCOMPARE(result->errorsAreTransient, transient);
}

void tst_CalendarClient::saysWhatGoogleSaid_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");
    const QByteArray html = "<html>" + QByteArray("é").repeated(300);
    QTest::newRow("message") << 403 << QByteArray(R"({"error": {"message": "Rate Limit Exceeded"}})")
                             << u"Google Calendar error 403: Rate Limit Exceeded"_s;
    QTest::newRow("html") << 500 << html << u"Google Calendar error 500: <html>"_s + u"é"_s.repeated(194);
    QTest::newRow("message is no string") << 400 << QByteArray(R"({"error": {"message": 7}})")
                                          << u"Google Calendar error 400: {\"error\": {\"message\": 7}}"_s;
    QTest::newRow("error is no object") << 400 << QByteArray(R"({"error": "x"})")
                                        << u"Google Calendar error 400: {\"error\": \"x\"}"_s;
    QTest::newRow("empty") << 404 << QByteArray() << u"Google Calendar error 404: "_s;
    QTest::newRow("families are one character")
        << 500 << u"👨‍👩‍👧"_s.repeated(201).toUtf8()
        << u"Google Calendar error 500: "_s + u"👨‍👩‍👧"_s.repeated(200);
}

void tst_CalendarClient::saysWhatGoogleSaid()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    const QString description = CalendarError{status, body}.description();
    QCOMPARE(description, text);
}

void tst_CalendarClient::forgetsAFetchWhoseOwnerIsGone()
{
    fetch();
    context.reset();
    http->answer(200, oneCalendar);
    QVERIFY(!result);
    QCOMPARE(http->open(), 0);
}

QTEST_GUILESS_MAIN(tst_CalendarClient)
#include "tst_CalendarClient.moc"
