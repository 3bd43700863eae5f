#include "calendar/Meeting.h"

#include "calendar/WireRecords.h"
#include "support/FakeUrlOpener.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

/// The members that make an event a meeting, changed or extended by those of `members` (null removes one).
GEvent event(const QByteArray &members = "{}")
{
    QJsonObject object = QJsonDocument::fromJson(R"({"iCalUID": "uid", "id": "id", "summary": "Review",
        "start": {"dateTime": "2026-01-01T10:00:00Z"}, "end": {"dateTime": "2026-01-01T10:30:00Z"}})")
                             .object();
    const QJsonObject changes = QJsonDocument::fromJson(members).object();
    for (auto change = changes.begin(); change != changes.end(); ++change)
        object.insert(change.key(), change.value());
    const auto list = decodeEventList(QJsonDocument(QJsonObject{{u"items"_s, QJsonArray{object}}}).toJson());
    return list.value().items->first();
}

std::optional<Meeting> meeting(const QByteArray &members = "{}")
{
    return Meeting::fromEvent(event(members), u"Work"_s, u"a@x|c"_s);
}

QString linkOf(const QByteArray &members)
{
    const auto converted = meeting(members);
    return converted->joinURL ? converted->joinURL->text() : QString();
}

} // namespace

class tst_Meeting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesOverTheFieldsOfAnEvent();
    void dropsWhatIsNoMeeting_data();
    void dropsWhatIsNoMeeting();
    void keepsWhatOnlyLooksLikeNone_data();
    void keepsWhatOnlyLooksLikeNone();
    void readsInstantsWithOffsetsAndFractions();
    void identifiesAnOccurrenceByIdentifierAndStart();
    void givesAnEventWithoutIdentifierANewOneEachTime();
    void namesAMeetingWithoutATitle();
    void countsPeopleButNotRooms();
    void looksForTheLinkInOrder_data();
    void looksForTheLinkInOrder();
    void opensTheApplicationWhereThereIsOne();
    void opensNothingWithoutALinkOrWithAForbiddenOne();
    void comparesEveryField();
};

void tst_Meeting::takesOverTheFieldsOfAnEvent()
{
    const std::optional<Meeting> converted = meeting();
    QVERIFY(converted);
    QCOMPARE(converted->id, u"uid|1767261600.0"_s);
    QCOMPARE(converted->title, u"Review"_s);
    QCOMPARE(converted->start, Instant{1767261600});
    QCOMPARE(converted->end, Instant{1767263400});
    QVERIFY(!converted->joinURL);
    QCOMPARE(converted->attendeeCount, 0);
    QCOMPARE(converted->calendarName, u"Work"_s);
    QCOMPARE(converted->calendarID, u"a@x|c"_s);
}

void tst_Meeting::dropsWhatIsNoMeeting_data()
{
    QTest::addColumn<QByteArray>("members");
    const auto row = [](const char *name, const char *members) { QTest::newRow(name) << QByteArray(members); };
    row("cancelled", R"({"status": "cancelled"})");
    row("free time", R"({"transparency": "transparent"})");
    row("working location", R"({"eventType": "workingLocation"})");
    row("out of office", R"({"eventType": "outOfOffice"})");
    row("focus time", R"({"eventType": "focusTime"})");
    row("birthday", R"({"eventType": "birthday"})");
    row("all day", R"({"start": {"date": "2026-01-01"}, "end": {"date": "2026-01-02"}})");
    row("no start", R"({"start": null})");
    row("no end", R"({"end": null})");
    row("empty start", R"({"start": {}})");
    row("start without offset", R"({"start": {"dateTime": "2026-01-01T09:00:00"}})");
    row("end unreadable", R"({"end": {"dateTime": "soon"}})");
    row("declined", R"({"attendees": [{"email": "a"}, {"self": true, "responseStatus": "declined"}]})");
}

void tst_Meeting::dropsWhatIsNoMeeting()
{
    QFETCH(QByteArray, members);
    QVERIFY(!meeting(members));
}

void tst_Meeting::keepsWhatOnlyLooksLikeNone_data()
{
    QTest::addColumn<QByteArray>("members");
    const auto row = [](const char *name, const char *members) { QTest::newRow(name) << QByteArray(members); };
    row("status in another case", R"({"status": "Cancelled"})");
    row("confirmed", R"({"status": "confirmed", "transparency": "opaque", "eventType": "default"})");
    row("unknown type", R"({"eventType": "somethingNew"})");
    row("somebody else declined", R"({"attendees": [{"email": "a", "responseStatus": "declined"}]})");
    row("self is false", R"({"attendees": [{"self": false, "responseStatus": "declined"}]})");
    row("only the first self counts",
        R"({"attendees": [{"self": true}, {"self": true, "responseStatus": "declined"}]})");
    row("tentative", R"({"attendees": [{"self": true, "responseStatus": "tentative"}]})");
    row("end before start", R"({"end": {"dateTime": "2025-01-01T10:30:00Z"}})");
}

void tst_Meeting::keepsWhatOnlyLooksLikeNone()
{
    QFETCH(QByteArray, members);
    QVERIFY(meeting(members));
}

void tst_Meeting::readsInstantsWithOffsetsAndFractions()
{
    QCOMPARE(meeting(R"({"start": {"dateTime": "2026-01-01T09:00:00.250Z"}})")->start, Instant{1767258000.25});
    QCOMPARE(meeting(R"({"start": {"dateTime": "2026-01-01T10:00:00+01:00", "timeZone": "Asia/Tokyo"}})")->start,
             Instant{1767258000});
}

void tst_Meeting::identifiesAnOccurrenceByIdentifierAndStart()
{
    QCOMPARE(meeting(R"({"iCalUID": null})")->id, u"id|1767261600.0"_s);
    QCOMPARE(meeting(R"({"iCalUID": ""})")->id, u"|1767261600.0"_s);
    QCOMPARE(meeting(R"({"start": {"dateTime": "2026-01-01T11:00:00Z"}})")->id, u"uid|1767265200.0"_s);
    QCOMPARE(meeting(R"({"start": {"dateTime": "2026-01-01T10:00:00.5Z"}})")->id, u"uid|1767261600.5"_s);
}

void tst_Meeting::givesAnEventWithoutIdentifierANewOneEachTime()
{
    const QString first = meeting(R"({"iCalUID": null, "id": null})")->id;
    const QString second = meeting(R"({"iCalUID": null, "id": null})")->id;
    static const QRegularExpression form(
        u"^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\|1767261600\\.0$"_s);
    QVERIFY2(form.match(first).hasMatch(), qPrintable(first));
    QVERIFY(first != second);
}

void tst_Meeting::namesAMeetingWithoutATitle()
{
    QCOMPARE(meeting(R"({"summary": null})")->title, u"(No title)"_s);
    QCOMPARE(meeting(R"({"summary": ""})")->title, u"(No title)"_s);
    QCOMPARE(meeting(R"({"summary": "  "})")->title, u"  "_s);
}

void tst_Meeting::countsPeopleButNotRooms()
{
    QCOMPARE(meeting(R"({"attendees": [{"self": true}, {"resource": false}, {"resource": true}]})")->attendeeCount, 2);
    QCOMPARE(meeting(R"({"attendees": []})")->attendeeCount, 0);
}

void tst_Meeting::looksForTheLinkInOrder_data()
{
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<QString>("link");
    const auto row = [](const char *name, const char *members, const char *link) {
        QTest::newRow(name) << QByteArray(members) << QString::fromLatin1(link);
    };
    row("hangout first", R"({"hangoutLink": "https://meet.google.com/a", "description": "https://zoom.us/j/1"})",
        "https://meet.google.com/a");
    row("an empty hangout ends the search", R"({"hangoutLink": "", "description": "https://zoom.us/j/1"})", "");
    row("an invalid hangout ends the search", R"({"hangoutLink": "a b", "description": "https://zoom.us/j/1"})", "");
    row("video entry point",
        R"({"conferenceData": {"entryPoints": [{"entryPointType": "phone", "uri": "tel:1"},
            {"entryPointType": "video", "uri": "https://x.example/1"}]}, "description": "https://zoom.us/j/1"})",
        "https://x.example/1");
    row("first video entry point without a link, then the texts",
        R"({"conferenceData": {"entryPoints": [{"entryPointType": "video"},
            {"entryPointType": "video", "uri": "https://x.example/2"}]}, "description": "https://zoom.us/j/1"})",
        "https://zoom.us/j/1");
    row("no entry points", R"({"conferenceData": {}, "location": "https://zoom.us/j/1"})", "https://zoom.us/j/1");
    row("location before description",
        R"({"location": "https://zoom.us/j/1", "description": "https://meet.google.com/a"})", "https://zoom.us/j/1");
    row("location and description are joined by one space",
        R"({"location": "Room 4", "description": "https://teams.microsoft.com/l/meetup-join/1"})",
        "https://teams.microsoft.com/l/meetup-join/1");
    row("entities are undone and punctuation trimmed",
        R"({"description": "at https://zoom.us/j/123?pwd=abc&amp;uname=x)."})",
        "https://zoom.us/j/123?pwd=abc&uname=x");
    row("found, but not valid", R"({"description": "https://zoom.us/j/{1}"})", "");
    row("none", "{}", "");
}

void tst_Meeting::looksForTheLinkInOrder()
{
    QFETCH(QByteArray, members);
    QFETCH(QString, link);
    QCOMPARE(linkOf(members), link);
}

void tst_Meeting::opensTheApplicationWhereThereIsOne()
{
    const auto zoom = meeting(R"({"hangoutLink": "https://zoom.us/j/85551234567?pwd=XyZ"})");
    FakeUrlOpener opener;
    zoom->join(opener);
    opener.handledSchemes.append(u"zoommtg"_s);
    zoom->join(opener);
    meeting(R"({"hangoutLink": "https://zoom.us/my/ada"})")->join(opener);
    QCOMPARE(opener.opened, QStringList({u"https://zoom.us/j/85551234567?pwd=XyZ"_s,
                                         u"zoommtg://zoom.us/join?action=join&confno=85551234567&pwd=XyZ"_s,
                                         u"https://zoom.us/my/ada"_s}));
}

void tst_Meeting::opensNothingWithoutALinkOrWithAForbiddenOne()
{
    FakeUrlOpener opener;
    meeting()->join(opener);
    const auto forbidden = meeting(R"({"hangoutLink": "file:///etc/passwd"})");
    QVERIFY(forbidden->joinURL);
    QVERIFY(!forbidden->canJoin());
    forbidden->join(opener);
    QVERIFY(opener.opened.isEmpty());
}

void tst_Meeting::comparesEveryField()
{
    const Meeting base = *meeting(R"({"hangoutLink": "https://zoom.us/j/1"})");
    const auto differs = [&](auto change) {
        Meeting other = base;
        change(other);
        return other != base;
    };
    QVERIFY(Meeting(base) == base);
    QVERIFY(differs([](Meeting &m) { m.id += u'x'; }));
    QVERIFY(differs([](Meeting &m) { m.title += u'x'; }));
    QVERIFY(differs([](Meeting &m) { m.start = m.start + 1; }));
    QVERIFY(differs([](Meeting &m) { m.end = m.end + 1; }));
    QVERIFY(differs([](Meeting &m) { m.joinURL.reset(); }));
    QVERIFY(differs([](Meeting &m) { ++m.attendeeCount; }));
    QVERIFY(differs([](Meeting &m) { m.calendarName += u'x'; }));
    QVERIFY(differs([](Meeting &m) { m.calendarID += u'x'; }));
}

QTEST_GUILESS_MAIN(tst_Meeting)
#include "tst_Meeting.moc"
