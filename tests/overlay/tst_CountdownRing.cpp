#include "overlay/CountdownRing.h"

#include "overlay/CardTags.h"
#include "overlay/MeetingCard.h"
#include "support/SampleMeetings.h"
#include "support/SampleThemes.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <cmath>
#include <numbers>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_CountdownRing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsRead_data();
    void textsRead();
    void textsAreDueAgainWhenTheyChange_data();
    void textsAreDueAgainWhenTheyChange();
    void progressFollowsTheTime_data();
    void progressFollowsTheTime();

    void isOfOneSize();
    void drainsClockwiseFromTwelve_data();
    void drainsClockwiseFromTwelve();
    void lineIsTenPointsWide();
    void trackIsFaintAllAround();
    void arcHasRoundEnds();
    void glowsOnlyInAGlowingTheme();

    void movesNoMoreOftenThanItShows_data();
    void movesNoMoreOftenThanItShows();
    void standsStillBeforeAndAfter();
    void paintsTheSameInParts_data();
    void paintsTheSameInParts();

    void theCardShowsItInPlaceOfThePill();
    void theCardsLeadTimeIsTheFullRing_data();
    void theCardsLeadTimeIsTheFullRing();
};

namespace {

constexpr Instant start{100000};
constexpr int room = 30;
constexpr QPointF centre(105 + room, 105 + room);

OverlayTheme theme(bool glow = false)
{
    OverlayTheme result = sample::glowing();
    result.background = SolidBackground{Qt::black};
    result.accent = Qt::green;
    result.glow = glow;
    return result;
}

CountdownRing ring(bool glow = false)
{
    return {start, 60, theme(glow)};
}

void paintInto(QImage &image, const Arrangement &arrangement, double remaining, const QRectF &dirty = {})
{
    QPainter painter(&image);
    painter.translate(room, room);
    if (!dirty.isEmpty()) {
        painter.setClipRect(dirty.toAlignedRect());
        painter.fillRect(dirty.toAlignedRect(), Qt::black);
    }
    arrangement.paint(painter, start - remaining, dirty.isEmpty() ? QRectF() : QRectF(dirty.toAlignedRect()));
}

QImage picture(const CountdownRing &ring, double remaining)
{
    QImage image(210 + 2 * room, 210 + 2 * room, QImage::Format_RGB32);
    image.fill(Qt::black);
    paintInto(image, ring.element(start - remaining).arrange(500), remaining);
    return image;
}

/// The colour `degrees` clockwise from twelve o'clock, `radius` points from the centre.
QColor at(const QImage &image, double degrees, double radius = 105)
{
    const double angle = degrees / 180 * std::numbers::pi;
    const QPointF point = centre + radius * QPointF(std::sin(angle), -std::cos(angle));
    return image.pixelColor(static_cast<int>(std::floor(point.x())), static_cast<int>(std::floor(point.y())));
}

bool isTrack(const QColor &colour)
{
    const int level = qRound(0.12 * 255); // white at that opacity over black
    return std::abs(colour.red() - level) <= 1 && std::abs(colour.green() - level) <= 1 &&
           std::abs(colour.blue() - level) <= 1;
}

} // namespace

void tst_CountdownRing::textsRead_data()
{
    QTest::addColumn<double>("remaining");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("caption");
    const auto row = [](double remaining, const QString &label, const QString &caption) {
        QTest::addRow("%g", remaining) << remaining << label << caption;
    };
    row(299, u"4:59"_s, u"until start"_s);
    row(59.5, u"1:00"_s, u"until start"_s);
    row(59.4, u"0:59"_s, u"until start"_s);
    row(0.5, u"0:01"_s, u"until start"_s);
    row(0.4, u"0:00"_s, u"until start"_s);
    row(0.0, u"now"_s, u"starting"_s);
    row(-0.0, u"now"_s, u"starting"_s);
    row(-0.6, u"now"_s, u"starting"_s);
    row(-4.9, u"now"_s, u"starting"_s);
    row(-4.999, u"now"_s, u"starting"_s);
    row(-5.0, u"+0:05"_s, u"since start"_s);
    row(-5.5, u"+0:06"_s, u"since start"_s);
    row(-7, u"+0:07"_s, u"since start"_s);
    row(4500, u"75:00"_s, u"until start"_s);
    row(-6000, u"+100:00"_s, u"since start"_s);
    row(1e300, u"16666666666666:40"_s, u"until start"_s);
}

void tst_CountdownRing::textsRead()
{
    QFETCH(double, remaining);
    QTEST(CountdownRing::label(remaining), "label");
    QTEST(CountdownRing::caption(remaining), "caption");
}

void tst_CountdownRing::textsAreDueAgainWhenTheyChange_data()
{
    QTest::addColumn<double>("remaining");
    for (double remaining :
         {60.0, 59.5, 59.49, 1.0, 0.75, 0.5, 0.4, 0.01, 0.0, -0.5, -4.99, -5.0, -5.49, -5.5, -100.25})
        QTest::addRow("%g", remaining) << remaining;
}

void tst_CountdownRing::textsAreDueAgainWhenTheyChange()
{
    QFETCH(double, remaining);
    const auto words = [](double seconds) { return CountdownRing::label(seconds) + CountdownRing::caption(seconds); };
    const double wait = CountdownRing::untilNextLabel(remaining);
    QVERIFY(wait > 0 && wait <= 5.01);
    if (wait > 0.01)
        QCOMPARE(words(remaining - (wait - 0.01)), words(remaining));
    QVERIFY(words(remaining - wait) != words(remaining));
}

void tst_CountdownRing::progressFollowsTheTime_data()
{
    QTest::addColumn<double>("remaining");
    QTest::addColumn<double>("progress");
    QTest::newRow("more than all") << 61.0 << 1.0;
    QTest::newRow("all") << 60.0 << 1.0;
    QTest::newRow("half") << 30.0 << 0.5;
    QTest::newRow("a little") << 0.6 << 0.01;
    QTest::newRow("start") << 0.0 << 0.0;
    QTest::newRow("after") << -3.0 << 0.0;
}

void tst_CountdownRing::progressFollowsTheTime()
{
    QFETCH(double, remaining);
    QFETCH(double, progress);
    QVERIFY(std::abs(ring().progress(start - remaining) - progress) < 1e-9);
}

void tst_CountdownRing::isOfOneSize()
{
    for (double remaining : {7000.0, 40.0, 0.0, -60000.0})
        QCOMPARE(ring(true).element(start - remaining).arrange(500).size(), QSizeF(210, 210));
}

void tst_CountdownRing::drainsClockwiseFromTwelve_data()
{
    QTest::addColumn<double>("remaining");
    QTest::addColumn<double>("degrees"); // where the arc ends
    QTest::newRow("full") << 90.0 << 360.0;
    QTest::newRow("three quarters") << 45.0 << 270.0;
    QTest::newRow("half, six o'clock") << 30.0 << 180.0;
    QTest::newRow("a quarter") << 15.0 << 90.0;
    QTest::newRow("a tenth") << 6.0 << 36.0;
    QTest::newRow("empty") << 0.0 << 0.0;
    QTest::newRow("since start") << -30.0 << 0.0;
}

void tst_CountdownRing::drainsClockwiseFromTwelve()
{
    QFETCH(double, remaining);
    QFETCH(double, degrees);
    const QImage image = picture(ring(), remaining);
    constexpr double cap = 5 / 105.0 * 180 / std::numbers::pi; // the round end reaches beyond
    for (double angle = 0.5; angle < 360; angle += 1) {
        const bool isNearAnEnd = degrees > 0 && (std::abs(angle - degrees) < cap + 1 || 360 - angle < cap + 1);
        if (angle < degrees - 1)
            QVERIFY2(at(image, angle) == QColor(Qt::green), qPrintable(QString::number(angle)));
        else if (!isNearAnEnd)
            QVERIFY2(isTrack(at(image, angle)), qPrintable(QString::number(angle)));
    }
}

void tst_CountdownRing::lineIsTenPointsWide()
{
    const QImage image = picture(ring(), 30);
    // To the right, where rows of pixels cut the arc square: from 100 to 110 points from the centre.
    const int y = static_cast<int>(centre.y());
    const auto green = [&](int distance) {
        return image.pixelColor(static_cast<int>(centre.x()) + distance, y).green();
    };
    QVERIFY(green(98) < 10);
    for (int distance = 101; distance < 109; ++distance)
        QCOMPARE(green(distance), 255);
    QVERIFY(green(111) < 10);
    double width = 0;
    for (int distance = 95; distance < 115; ++distance)
        width += green(distance) / 255.0;
    QVERIFY2(std::abs(width - 10) < 0.1, qPrintable(QString::number(width)));
}

void tst_CountdownRing::trackIsFaintAllAround()
{
    const QImage image = picture(ring(), -10);
    for (double angle = 0; angle < 360; angle += 0.5) {
        QVERIFY(isTrack(at(image, angle, 102)));
        QVERIFY(isTrack(at(image, angle, 108)));
        QCOMPARE(at(image, angle, 97).red(), 0);
        QCOMPARE(at(image, angle, 113).red(), 0);
    }
}

void tst_CountdownRing::arcHasRoundEnds()
{
    const QImage image = picture(ring(), 30);
    const auto area = [&](const QRect &part) {
        const double track = 0.12 * 255;
        double result = 0;
        for (int y = part.top(); y <= part.bottom(); ++y) {
            for (int x = part.left(); x <= part.right(); ++x)
                result += std::max(0.0, (image.pixelColor(x, y).green() - track) / (255 - track));
        }
        return result;
    };
    // A half circle beyond six o'clock and one before twelve, each of the line's width.
    const double half = std::numbers::pi * 25 / 2;
    const int x = static_cast<int>(centre.x());
    const double end = area({x - 12, static_cast<int>(centre.y()) + 96, 12, 18});
    const double beginning = area({x - 12, static_cast<int>(centre.y()) - 114, 12, 18});
    QVERIFY2(std::abs(end - half) < 1.5, qPrintable(QString::number(end)));
    QVERIFY2(std::abs(beginning - half) < 1.5, qPrintable(QString::number(beginning)));
}

void tst_CountdownRing::glowsOnlyInAGlowingTheme()
{
    const QImage plain = picture(ring(false), 30);
    const QImage glowing = picture(ring(true), 30);
    QCOMPARE(at(plain, 90, 114), QColor(Qt::black));
    // Just outside of the line, about half of it at 0.8, a little less on the outside of a curve and for a thin line.
    const int beside = at(glowing, 90, 110.5).green();
    QVERIFY2(beside > 50 && beside < 0.5 * 0.8 * 255, qPrintable(QString::number(beside)));
    QVERIFY(at(glowing, 90, 116).green() > 15);
    QCOMPARE(at(glowing, 90, 130).green(), 0);
    QCOMPARE(at(glowing, 90, 116).red(), 0);
    QCOMPARE(at(glowing, 270, 116), QColor(Qt::black)); // the track casts no light
    QCOMPARE(at(picture(ring(true), -1), 90, 116), QColor(Qt::black));
}

void tst_CountdownRing::movesNoMoreOftenThanItShows_data()
{
    QTest::addColumn<double>("total");
    QTest::addColumn<double>("density");
    QTest::addColumn<double>("wait");
    const double length = 2 * std::numbers::pi * 105;
    QTest::newRow("a minute") << 60.0 << 1.0 << 0.05; // 11 points per second: twenty times a second are the limit
    QTest::newRow("five minutes") << 300.0 << 1.0 << 0.5 / (length / 300);
    QTest::newRow("five minutes, dense") << 300.0 << 2.0 << 0.25 / (length / 300);
    QTest::newRow("an hour") << 3600.0 << 1.0 << 0.5 / (length / 3600);
}

void tst_CountdownRing::movesNoMoreOftenThanItShows()
{
    QFETCH(double, total);
    QFETCH(double, density);
    QFETCH(double, wait);
    const CountdownRing subject{start, total, theme()};
    const Instant now = start - total / 2;
    QVERIFY(std::abs(subject.element(now).arrange(500).untilChange(now, density) - wait) < 1e-6);
}

void tst_CountdownRing::standsStillBeforeAndAfter()
{
    const auto wait = [](double remaining) {
        return ring(true).element(start - remaining).arrange(500).untilChange(start - remaining, 1);
    };
    QVERIFY(std::abs(wait(90) - 30.05) < 1e-6); // full until a minute before
    QVERIFY(wait(0.02) <= 0.02 + 1e-6);         // the last of it goes at the start
    QVERIFY(std::isinf(wait(0)));
    QVERIFY(std::isinf(wait(-10)));
    const Arrangement arrangement = ring(true).element(start - 90).arrange(500);
    QVERIFY(arrangement.changed(start - 90, start - 61).empty());
    QVERIFY(arrangement.changed(start, start + 100).empty());
    QCOMPARE(arrangement.changed(start - 40, start - 39.95).size(), 1U);
    const QRectF moved = arrangement.changed(start - 40, start - 39.95).front();
    QVERIFY2(moved.width() < 80 && moved.height() < 80, qPrintable(QString::number(moved.width())));
}

void tst_CountdownRing::paintsTheSameInParts_data()
{
    QTest::addColumn<bool>("glow");
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<double>("step");
    QTest::newRow("steps") << false << 60.2 << 40.0 << 0.05;
    QTest::newRow("to the end") << false << 2.0 << -0.2 << 0.05;
    QTest::newRow("large steps") << false << 60.0 << -10.0 << 7.0;
    QTest::newRow("glowing") << true << 60.1 << 55.0 << 0.05;
    QTest::newRow("backwards") << true << 20.0 << 40.0 << -0.7;
}

void tst_CountdownRing::paintsTheSameInParts()
{
    QFETCH(bool, glow);
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(double, step);
    const Arrangement arrangement = ring(glow).element(start - from).arrange(500);
    QImage image(210 + 2 * room, 210 + 2 * room, QImage::Format_RGB32);
    image.fill(Qt::black);
    paintInto(image, arrangement, from);
    double before = from;
    for (double remaining = from - step; (to - remaining) * step < 0; remaining -= step) {
        for (const QRectF &part : arrangement.changed(start - before, start - remaining))
            paintInto(image, arrangement, remaining, part);
        before = remaining;
    }
    QImage whole(image.size(), image.format());
    whole.fill(Qt::black);
    paintInto(whole, arrangement, before);
    QCOMPARE(image, whole);
}

void tst_CountdownRing::theCardShowsItInPlaceOfThePill()
{
    MeetingCard card{sample::designReview(), {}, theme(), {}};
    const Instant now = sample::ten - 42;
    const Arrangement pill = card.element(now, {}).arrange(1000);
    card.options.ringCountdown = true;
    const Arrangement arrangement = card.element(now, {}).arrange(1000);
    QCOMPARE(arrangement.frameOf(tag::countdown)->size(), QSizeF(210, 210));
    QCOMPARE(arrangement.tagged().front().label, u"0:42 until start"_s);
    QCOMPARE(card.countdownWords(now), u"0:42 until start"_s);
    QCOMPARE(pill.tagged().front().label, u"Starts in 0:42"_s);
    // Eight points more below it than below the pill.
    const auto below = [](const Arrangement &each) {
        return each.texts().front().frame.top() - each.frameOf(tag::countdown)->bottom();
    };
    QCOMPARE(below(arrangement), below(pill) + 8);
    QCOMPARE(card.untilNextWords(now), CountdownRing::untilNextLabel(42));
}

void tst_CountdownRing::theCardsLeadTimeIsTheFullRing_data()
{
    QTest::addColumn<int>("minutes");
    QTest::addColumn<double>("total");
    QTest::newRow("five minutes") << 5 << 300.0;
    QTest::newRow("one minute") << 1 << 60.0;
    QTest::newRow("none") << 0 << 60.0;
    QTest::newRow("negative") << -3 << 60.0;
}

void tst_CountdownRing::theCardsLeadTimeIsTheFullRing()
{
    QFETCH(int, minutes);
    QFETCH(double, total);
    const MeetingCard card{sample::designReview(), {}, theme(), {.ringCountdown = true, .leadMinutes = minutes}};
    const Arrangement arrangement = card.element(sample::ten - total, {}).arrange(1000);
    QVERIFY(arrangement.changed(sample::ten - total - 20, sample::ten - total).empty());
    QVERIFY(!arrangement.changed(sample::ten - total, sample::ten - total + 1).empty());
}

QTEST_MAIN(tst_CountdownRing)
#include "tst_CountdownRing.moc"
