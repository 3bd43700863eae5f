#include "themes/BandedRegion.h"

#include <QTest>

using namespace kelp;

class tst_BandedRegion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void coversEveryFrame_data();
    void coversEveryFrame();
    void nothingIsNothing();
    void hasFewRectangles();
};

namespace {

const QRect view(0, 0, 640, 401);

/// Tall and narrow, spread over the view and beyond its edges.
std::vector<QRectF> streaks(int count)
{
    std::vector<QRectF> frames;
    for (int i = 0; i < count; ++i)
        frames.emplace_back(i * 37 % 680 - 20.5, i * 53 % 460 - 30.25, 3.5, 47.75);
    return frames;
}

} // namespace

void tst_BandedRegion::coversEveryFrame_data()
{
    QTest::addColumn<int>("count");
    for (const int count : {1, 2, 10, 126})
        QTest::addRow("%d", count) << count;
}

void tst_BandedRegion::coversEveryFrame()
{
    QFETCH(int, count);
    const QRegion region = bandedRegion(streaks(count), view);
    QRegion exact;
    for (const QRectF &frame : streaks(count))
        exact += frame.toAlignedRect() & view;
    QVERIFY(exact.subtracted(region).isEmpty());
    QVERIFY(region.subtracted(view).isEmpty());
    // Qt relies on the order and the heights that setRects is given.
    QRegion again;
    for (const QRect &each : region)
        again += each;
    QCOMPARE(region, again);
}

void tst_BandedRegion::nothingIsNothing()
{
    QVERIFY(bandedRegion({}, view).isEmpty());
    QVERIFY(bandedRegion({QRectF(700, 10, 20, 20), QRectF(10, -50, 20, 20)}, view).isEmpty());
    QVERIFY(bandedRegion(streaks(5), {}).isEmpty());
}

void tst_BandedRegion::hasFewRectangles()
{
    QRegion exact;
    for (const QRectF &frame : streaks(250))
        exact += frame.toAlignedRect() & view;
    const QRegion region = bandedRegion(streaks(250), view);
    QVERIFY(region.rectCount() * 4 < exact.rectCount());
}

QTEST_GUILESS_MAIN(tst_BandedRegion)

#include "tst_BandedRegion.moc"
