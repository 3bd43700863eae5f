#include "overlay/FramePacer.h"

#include "support/FakeClock.h"
#include "themes/KelpClock.h"

#include <QTest>

#include <vector>

using namespace kelp;

class tst_FramePacer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theRateDependsOnTheWork_data();
    void theRateDependsOnTheWork();
    void framesComeAtTheirRate();
    void aSetClockDoesNotHoldThemUp();
    void framesEndWithThePacer();
    void anotherTimeCanBeShown();
};

void tst_FramePacer::theRateDependsOnTheWork_data()
{
    QTest::addColumn<QSize>("pixels");
    QTest::addColumn<int>("views");
    QTest::addColumn<double>("rate");
    QTest::newRow("laptop") << QSize(1440, 900) << 1 << 30.0;
    QTest::newRow("just below 4 million pixels") << QSize(2500, 1600) << 1 << 30.0;
    QTest::newRow("4K") << QSize(3840, 2160) << 1 << 20.0;
    QTest::newRow("two displays") << QSize(1440, 900) << 2 << 20.0;
}

void tst_FramePacer::theRateDependsOnTheWork()
{
    QFETCH(QSize, pixels);
    QFETCH(int, views);
    QFETCH(double, rate);
    QCOMPARE(FramePacer::interval(pixels, static_cast<std::size_t>(views)), 1 / rate);
}

void tst_FramePacer::framesComeAtTheirRate()
{
    test::FakeClock clock;
    std::vector<double> frames;
    const Instant start = clock.now();
    const FramePacer pacer(clock, 1.0 / 30, [&](Instant shown) { frames.push_back(shown - start); });
    clock.advance(10.01);
    QCOMPARE(frames.size(), std::size_t{300});
    for (std::size_t i = 0; i < frames.size(); ++i)
        QVERIFY(std::abs(frames[i] - static_cast<double>(i + 1) / 30) < 0.001);
}

void tst_FramePacer::aSetClockDoesNotHoldThemUp()
{
    test::FakeClock clock;
    int frames = 0;
    const FramePacer pacer(clock, 0.05, [&](Instant) { ++frames; });
    clock.jump(clock.now() - 3600);
    clock.advance(1);
    QVERIFY(frames >= 18);
    clock.jump(clock.now() + 7200);
    clock.advance(1);
    QVERIFY(frames >= 37 && frames <= 41); // none is made up for
}

void tst_FramePacer::framesEndWithThePacer()
{
    test::FakeClock clock;
    int frames = 0;
    {
        const FramePacer pacer(clock, 0.05, [&](Instant) { ++frames; });
        clock.advance(0.11);
    }
    QCOMPARE(frames, 2);
    clock.advance(1);
    QCOMPARE(frames, 2);
}

void tst_FramePacer::anotherTimeCanBeShown()
{
    test::FakeClock clock;
    Instant last;
    const FramePacer pacer(clock, 0.05, [&](Instant shown) { last = shown; });
    KelpClock::override = Instant{1000};
    clock.advance(0.06);
    KelpClock::override.reset();
    QCOMPARE(last, Instant{1000});
    clock.advance(0.05);
    QVERIFY(last > Instant{1'000'000});
}

QTEST_GUILESS_MAIN(tst_FramePacer)
#include "tst_FramePacer.moc"
