#include "calendar/WireRecords.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_WireRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesAbsentAndNullItemsAsNone();
    void readsEveryMemberOfAnEvent();
    void readsEveryMemberOfACalendar();
    void refusesWholeBodies_data();
    void refusesWholeBodies();
    void ignoresMembersItDoesNotKnow();
    void namesTheMemberThatIsWrong();
};

void tst_WireRecords::takesAbsentAndNullItemsAsNone()
{
    for (const QByteArray body : {"{}", R"({"items": null})", R"({"items": []})"}) {
        QVERIFY(decodeEventList(body)->items.value_or(QList<GEvent>()).isEmpty());
        QVERIFY(decodeCalendarList(body)->items.value_or(QList<GCalendarList::Entry>()).isEmpty());
    }
}

void tst_WireRecords::readsEveryMemberOfAnEvent()
{
    const auto list = decodeEventList(R"({"items": [{"id": "1", "iCalUID": "2", "status": "3", "summary": "4",
        "description": "5", "location": "6", "start": {"dateTime": "7", "date": "8"}, "end": {"dateTime": "9"},
        "transparency": "10", "eventType": "11", "hangoutLink": "12",
        "conferenceData": {"entryPoints": [{"entryPointType": "13", "uri": "14"}]},
        "attendees": [{"email": "15", "responseStatus": "16", "self": true, "resource": false}, {"self": null}]}]})");
    const GEvent event = list->items->first();
    QCOMPARE(event.id, u"1"_s);
    QCOMPARE(event.iCalUID, u"2"_s);
    QCOMPARE(event.status, u"3"_s);
    QCOMPARE(event.summary, u"4"_s);
    QCOMPARE(event.description, u"5"_s);
    QCOMPARE(event.location, u"6"_s);
    QCOMPARE(event.start->dateTime, u"7"_s);
    QCOMPARE(event.start->date, u"8"_s);
    QCOMPARE(event.end->dateTime, u"9"_s);
    QVERIFY(!event.end->date);
    QCOMPARE(event.transparency, u"10"_s);
    QCOMPARE(event.eventType, u"11"_s);
    QCOMPARE(event.hangoutLink, u"12"_s);
    QCOMPARE(event.conferenceData->entryPoints->first().entryPointType, u"13"_s);
    QCOMPARE(event.conferenceData->entryPoints->first().uri, u"14"_s);
    QCOMPARE(event.attendees->first().email, u"15"_s);
    QCOMPARE(event.attendees->first().responseStatus, u"16"_s);
    QCOMPARE(event.attendees->first().isSelf, true);
    QCOMPARE(event.attendees->first().resource, false);
    QVERIFY(!event.attendees->last().isSelf);
}

void tst_WireRecords::readsEveryMemberOfACalendar()
{
    const auto list = decodeCalendarList(R"({"items": [{"id": "1", "summary": "2", "summaryOverride": "3",
        "selected": true, "primary": false, "backgroundColor": "#00ff00"}, {"id": ""}]})");
    const GCalendarList::Entry entry = list->items->first();
    QCOMPARE(entry.id, u"1"_s);
    QCOMPARE(entry.summary, u"2"_s);
    QCOMPARE(entry.summaryOverride, u"3"_s);
    QCOMPARE(entry.selected, true);
    QCOMPARE(entry.primary, false);
    QCOMPARE(entry.backgroundColor, u"#00ff00"_s);
    QVERIFY(!list->items->last().summary);
}

void tst_WireRecords::refusesWholeBodies_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("events");
    const auto events = [](const char *body) { QTest::newRow(*body ? body : "(empty)") << QByteArray(body) << true; };
    const auto calendars = [](const char *body) { QTest::newRow(body) << QByteArray(body) << false; };
    events("");
    events("<html>");
    events("[]");
    events("7");
    events("{} {}");
    events("{\"items\": [}");
    events(R"({"items": {}})");
    events(R"({"items": "x"})");
    events(R"({"items": [null]})");
    events(R"({"items": [{"id": 7}]})");
    events(R"({"items": [{"summary": true}]})");
    events(R"({"items": [{"start": "2026-01-01"}]})");
    events(R"({"items": [{"start": {"dateTime": 7}}]})");
    events(R"({"items": [{"conferenceData": []}]})");
    events(R"({"items": [{"conferenceData": {"entryPoints": {}}}]})");
    events(R"({"items": [{"conferenceData": {"entryPoints": [7]}}]})");
    events(R"({"items": [{"conferenceData": {"entryPoints": [{"uri": 7}]}}]})");
    events(R"({"items": [{"attendees": [null]}]})");
    events(R"({"items": [{"attendees": [{"self": "true"}]}]})");
    events(R"({"items": [{"attendees": [{"self": 1}]}]})");
    events(R"({"items": [{}, {}, {"location": []}]})");
    calendars(R"({"items": [{"summary": "without id"}]})");
    calendars(R"({"items": [{"id": null}]})");
    calendars(R"({"items": [{"id": "a"}, {"id": "b", "selected": "true"}]})");
    calendars(R"({"items": [{"id": "b", "primary": 1}]})");
    calendars(R"({"items": [{"id": "b", "backgroundColor": 1}]})");
}

void tst_WireRecords::refusesWholeBodies()
{
    QFETCH(QByteArray, body);
    QFETCH(bool, events);
    QVERIFY(events ? !decodeEventList(body) : !decodeCalendarList(body));
}

void tst_WireRecords::ignoresMembersItDoesNotKnow()
{
    QVERIFY(decodeEventList(R"({"kind": 7, "items": [{"recurringEventId": 1, "organizer": {"self": "x"}, "ID": 7}]})"));
    QVERIFY(!decodeEventList(R"({"items": [{"ID": "x"}]})")->items->first().id);
}

void tst_WireRecords::namesTheMemberThatIsWrong()
{
    const auto list = decodeEventList(R"({"items": [{}, {"attendees": [{}, {"self": "x"}]}]})");
    QVERIFY2(list.error().description().contains(u"items[1].attendees[1].self"),
             qPrintable(list.error().description()));
}

QTEST_GUILESS_MAIN(tst_WireRecords)
#include "tst_WireRecords.moc"
