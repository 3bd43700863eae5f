#include "overlay/WelcomeCard.h"

#include "overlay/CardTags.h"
#include "support/SampleMeetings.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_WelcomeCard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void connectedReads_data();
    void connectedReads();
    void nextLineReads_data();
    void nextLineReads();
    void hasOneButtonAndAllItsTexts();
};

void tst_WelcomeCard::connectedReads_data()
{
    QTest::addColumn<QString>("email");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("text");
    QTest::newRow("one") << u"ada@example.com"_s << 1 << u"Connected to ada@example.com · 1 calendar"_s;
    QTest::newRow("three") << u"ada@example.com"_s << 3 << u"Connected to ada@example.com · 3 calendars"_s;
    QTest::newRow("none") << u"ada@example.com"_s << 0 << u"Connected to ada@example.com · 0 calendars"_s;
    QTest::newRow("address unknown") << QString() << 1 << u"Connected to Google · 1 calendar"_s;
}

void tst_WelcomeCard::connectedReads()
{
    QFETCH(QString, email);
    QFETCH(int, count);
    QFETCH(QString, text);
    const WelcomeCard card{{email.isNull() ? std::nullopt : std::optional(email), count, {}}, OverlayTheme::midnight()};
    QCOMPARE(card.connected(), text);
}

void tst_WelcomeCard::nextLineReads_data()
{
    QTest::addColumn<double>("ahead");
    QTest::addColumn<QString>("text");
    QTest::newRow("soon") << 720.0 << u"Next meeting: Weekly design review at 10:12 (in 12 minutes)"_s;
    QTest::newRow("one hour") << 3600.0 << u"Next meeting: Weekly design review at 11:00 (in 1 hour)"_s;
    QTest::newRow("tomorrow") << 82800.0 << u"Next meeting: Weekly design review at 1/2/26, 09:00 (in 23 hours)"_s;
    QTest::newRow("just begun") << -30.0 << u"Next meeting: Weekly design review at 09:59 (30 seconds ago)"_s;
}

void tst_WelcomeCard::nextLineReads()
{
    QFETCH(double, ahead);
    QFETCH(QString, text);
    Meeting meeting = sample::designReview();
    meeting.start = sample::ten + ahead;
    const WelcomeCard card{{{}, 1, meeting}, OverlayTheme::midnight()};
    QCOMPARE(card.nextLine(sample::ten), text);
    const WelcomeCard without{{{}, 1, {}}, OverlayTheme::midnight()};
    QCOMPARE(without.nextLine(sample::ten), u"No meetings in the next 24 hours"_s);
}

void tst_WelcomeCard::hasOneButtonAndAllItsTexts()
{
    const WelcomeCard card{{u"ada@example.com"_s, 2, sample::designReview()}, OverlayTheme::midnight()};
    const Arrangement arrangement = card.element(sample::ten - 60, {}).arrange(1000);
    QCOMPARE(arrangement.tagged().size(), 1U);
    QCOMPARE(arrangement.tagged().front().tag, tag::dismiss);
    QCOMPARE(arrangement.tagged().front().label, u"Got it"_s);
    QStringList texts;
    for (const Arrangement::Text &each : arrangement.texts())
        texts.append(each.text);
    QCOMPARE(texts, (QStringList{u"Kelp is set up"_s, u"Connected to ada@example.com · 2 calendars"_s,
                                 u"Next meeting: Weekly design review at 10:00 (in 1 minute)"_s,
                                 u"This screen will cover your displays right before each meeting."_s}));
}

QTEST_MAIN(tst_WelcomeCard)
#include "tst_WelcomeCard.moc"
