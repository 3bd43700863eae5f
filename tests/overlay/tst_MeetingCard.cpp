#include "overlay/MeetingCard.h"

#include "overlay/CardTags.h"
#include "support/SampleMeetings.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_MeetingCard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countdownReads_data();
    void countdownReads();
    void countdownIsDueAgainWhenItChanges_data();
    void countdownIsDueAgainWhenItChanges();
    void detailsRead_data();
    void detailsRead();
    void buttonsAndHintFollowTheLink_data();
    void buttonsAndHintFollowTheLink();
    void previousRowIsThereOnlyWithAPreviousMeeting();
    void longPreviousTitleKeepsToItsWidth();
    void longTitleKeepsToThreeLines();
    void emptyCalendarNameLeavesTheRestAlone();
    void strangersWordsCannotReorderOurs();
};

namespace {

MeetingCard card(const Meeting &meeting, const OverlayOptions &options = {},
                 const std::optional<Meeting> &previous = {})
{
    return {meeting, previous, OverlayTheme::midnight(), options};
}

Arrangement arranged(const MeetingCard &card)
{
    return card.element(sample::ten - 60, {}).arrange(1000);
}

QStringList labels(const Arrangement &arrangement)
{
    QStringList result;
    for (const Arrangement::Tagged &each : arrangement.tagged())
        result.append(each.label);
    return result;
}

QStringList texts(const Arrangement &arrangement)
{
    QStringList result;
    for (const Arrangement::Text &each : arrangement.texts())
        result.append(each.text);
    return result;
}

} // namespace

void tst_MeetingCard::countdownReads_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    const auto row = [](double seconds, const QString &text) { QTest::addRow("%g", seconds) << seconds << text; };
    row(245, u"Starts in 4:05"_s);
    row(59.5, u"Starts in 1:00"_s);
    row(59.4, u"Starts in 0:59"_s);
    row(1, u"Starts in 0:01"_s);
    row(0.5, u"Starts in 0:01"_s);
    row(0.4, u"Starting now"_s);
    row(0, u"Starting now"_s);
    row(-4, u"Starting now"_s);
    row(-4.4, u"Starting now"_s);
    row(-4.5, u"Started 0:05 ago"_s);
    row(-5, u"Started 0:05 ago"_s);
    row(-90, u"Started 1:30 ago"_s);
    row(75 * 60, u"Starts in 75:00"_s);
    row(-6000, u"Started 100:00 ago"_s);
    row(1e300, u"Starts in 16666666666666:40"_s);
}

void tst_MeetingCard::countdownReads()
{
    QFETCH(double, seconds);
    QFETCH(QString, text);
    const Instant now{0};
    QCOMPARE(MeetingCard::countdown(now + seconds, now), text);
}

void tst_MeetingCard::countdownIsDueAgainWhenItChanges_data()
{
    QTest::addColumn<double>("seconds");
    for (double seconds : {60.0, 59.5, 59.49, 59.51, 0.75, 0.5, 0.0, -0.5, -4.49, -100.25, 3599.999})
        QTest::addRow("%g", seconds) << seconds;
}

void tst_MeetingCard::countdownIsDueAgainWhenItChanges()
{
    QFETCH(double, seconds);
    const Instant start{1000};
    const Instant now = start - seconds;
    const double wait = MeetingCard::untilNextCountdown(start, now);
    QVERIFY(wait > 0 && wait <= 1.01);
    if (wait > 0.01)
        QCOMPARE(std::round(start - (now + (wait - 0.01))), std::round(seconds));
    QCOMPARE(std::round(start - (now + wait)), std::round(seconds) - 1);
}

void tst_MeetingCard::detailsRead_data()
{
    QTest::addColumn<int>("attendees");
    QTest::addColumn<bool>("showAttendees");
    QTest::addColumn<bool>("showCalendar");
    QTest::addColumn<QString>("text");
    QTest::newRow("all") << 5 << true << true << u"10:00 – 10:30  ·  5 people  ·  Work"_s;
    QTest::newRow("two people") << 2 << true << false << u"10:00 – 10:30  ·  2 people"_s;
    QTest::newRow("alone") << 1 << true << true << u"10:00 – 10:30  ·  Work"_s;
    QTest::newRow("nobody") << 0 << true << true << u"10:00 – 10:30  ·  Work"_s;
    QTest::newRow("people hidden") << 5 << false << true << u"10:00 – 10:30  ·  Work"_s;
    QTest::newRow("only the times") << 5 << false << false << u"10:00 – 10:30"_s;
}

void tst_MeetingCard::detailsRead()
{
    QFETCH(int, attendees);
    QFETCH(bool, showAttendees);
    QFETCH(bool, showCalendar);
    QFETCH(QString, text);
    Meeting meeting = sample::designReview();
    meeting.attendeeCount = attendees;
    const MeetingCard subject = card(meeting, {.showAttendees = showAttendees, .showCalendar = showCalendar});
    QCOMPARE(subject.details(), text);
    QVERIFY(texts(arranged(subject)).contains(text));
}

void tst_MeetingCard::buttonsAndHintFollowTheLink_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QStringList>("buttons");
    QTest::addColumn<QString>("hint");
    const QString both = u"Return to join · Esc to dismiss"_s;
    const QString only = u"Esc to dismiss"_s;
    QTest::newRow("known provider") << u"https://zoom.us/j/1"_s
                                    << QStringList{u"Join Zoom"_s, u"Snooze 5 min"_s, u"Dismiss"_s} << both;
    QTest::newRow("unknown provider") << u"https://example.com/call"_s
                                      << QStringList{u"Join meeting"_s, u"Snooze 5 min"_s, u"Dismiss"_s} << both;
    QTest::newRow("none") << QString() << QStringList{u"Snooze 5 min"_s, u"Dismiss"_s} << only;
    QTest::newRow("not opened") << u"file:///etc/passwd"_s << QStringList{u"Snooze 5 min"_s, u"Dismiss"_s} << only;
}

void tst_MeetingCard::buttonsAndHintFollowTheLink()
{
    QFETCH(QString, link);
    QFETCH(QStringList, buttons);
    QFETCH(QString, hint);
    Meeting meeting = sample::designReview();
    meeting.joinURL = link.isEmpty() ? std::nullopt : MeetingLink::fromText(link);
    const Arrangement arrangement = arranged(card(meeting, {.snoozeMinutes = 5}));
    QCOMPARE(labels(arrangement), QStringList{u"Starts in 1:00"_s} + buttons);
    QCOMPARE(texts(arrangement).constLast(), hint);
    QCOMPARE(arrangement.frameOf(tag::join).has_value(), buttons.size() == 3);
}

void tst_MeetingCard::previousRowIsThereOnlyWithAPreviousMeeting()
{
    QVERIFY(!arranged(card(sample::designReview())).frameOf(tag::joinPrevious));
    const Arrangement arrangement = arranged(card(sample::designReview(), {}, sample::budgetPlanning()));
    QVERIFY(arrangement.frameOf(tag::joinPrevious));
    QVERIFY(texts(arrangement).contains(u"Still on: Budget planning with the regional offices ·"_s));
    QCOMPARE(labels(arrangement).constLast(), u"Join"_s);
}

void tst_MeetingCard::longPreviousTitleKeepsToItsWidth()
{
    const Meeting previous = sample::titled(sample::budgetPlanning(), QString(200, u'w'));
    const Arrangement arrangement = arranged(card(sample::designReview(), {}, previous));
    const QRectF join = *arrangement.frameOf(tag::joinPrevious);
    const auto words = std::find_if(arrangement.texts().begin(), arrangement.texts().end(),
                                    [](const Arrangement::Text &each) { return each.text.startsWith("Still on"_L1); });
    QVERIFY(words->frame.width() > 500);
    QVERIFY(join.right() - words->frame.left() <= 700);
    QVERIFY(words->frame.right() <= join.left());
    QCOMPARE(arrangement.size().width(),
             arranged(card(sample::designReview(), {}, sample::titled(previous, QString(400, u'w')))).size().width());
}

void tst_MeetingCard::longTitleKeepsToThreeLines()
{
    const double oneLine = arranged(card(sample::designReview())).size().height();
    const double many =
        arranged(card(sample::titled(sample::designReview(), u"very long words "_s.repeated(60)))).size().height();
    const double more =
        arranged(card(sample::titled(sample::designReview(), u"very long words "_s.repeated(600)))).size().height();
    QCOMPARE(many, more);
    QVERIFY(many - oneLine < 60); // three lines of half the size against one of the full size
    QVERIFY(many > oneLine);
}

void tst_MeetingCard::emptyCalendarNameLeavesTheRestAlone()
{
    Meeting meeting = sample::designReview();
    meeting.calendarName.clear();
    QCOMPARE(card(meeting).details(), u"10:00 – 10:30  ·  5 people  ·  "_s);
    QVERIFY(arranged(card(meeting)).frameOf(tag::join));
}

void tst_MeetingCard::strangersWordsCannotReorderOurs()
{
    Meeting meeting = sample::designReview();
    meeting.title = u"a\u202Eb\nc"_s;
    meeting.calendarName = u"عمل"_s;
    const QStringList shown = texts(arranged(card(meeting)));
    QVERIFY(shown.contains(u"ab c"_s));
    QVERIFY(shown.contains(u"10:00 – 10:30  ·  5 people  ·  عمل"_s));
}

QTEST_MAIN(tst_MeetingCard)
#include "tst_MeetingCard.moc"
