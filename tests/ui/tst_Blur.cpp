#include "ui/Blur.h"

#include <QTest>

#include <cmath>

using namespace kelp;

class tst_Blur : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void spreadsByItsRadius_data();
    void spreadsByItsRadius();
    void looksTheSameFromAllSides();
    void keepsTheSumAndReachesAsFarAsItSays_data();
    void keepsTheSumAndReachesAsFarAsItSays();
    void leavesAnEvenPlaneAlone();
    void mixesColoursByTheirCoverage();
    void treatsWhatLiesOutsideAsTransparent();
    void doesNothingForNoRadius();
};

namespace {

constexpr int side = 161;
constexpr int middle = side / 2;

/// A square of full coverage in the middle of nothing.
QImage spot(int half)
{
    QImage image(side, side, QImage::Format_Alpha8);
    image.fill(0);
    for (int y = middle - half; y <= middle + half; ++y) {
        for (int x = middle - half; x <= middle + half; ++x)
            image.scanLine(y)[x] = 255;
    }
    return image;
}

double sum(const QImage &image)
{
    double result = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            result += image.constScanLine(y)[x];
    }
    return result;
}

/// Of the coverage along the line through the middle.
double variance(const QImage &image)
{
    double weight = 0;
    double moment = 0;
    for (int x = 0; x < side; ++x) {
        const double level = image.constScanLine(middle)[x];
        weight += level;
        moment += level * (x - middle) * (x - middle);
    }
    return moment / weight;
}

} // namespace

void tst_Blur::spreadsByItsRadius_data()
{
    QTest::addColumn<double>("radius");
    for (double radius : {4.0, 8.0, 12.0, 22.0, 24.0, 31.5})
        QTest::addRow("%g", radius) << radius;
}

void tst_Blur::spreadsByItsRadius()
{
    QFETCH(double, radius);
    const QImage image = spot(5);
    const double added = variance(blurred(image, radius)) - variance(image);
    // Faint levels at the far ends are rounded away.
    QVERIFY2(std::abs(std::sqrt(added) - radius / 2) < 0.05 * radius, qPrintable(QString::number(std::sqrt(added))));
}

void tst_Blur::looksTheSameFromAllSides()
{
    const QImage image = blurred(spot(3), 14);
    QCOMPARE(image.mirrored(true, false), image);
    QCOMPARE(image.mirrored(false, true), image);
    QCOMPARE(image.transformed(QTransform().rotate(90)), image);
}

void tst_Blur::keepsTheSumAndReachesAsFarAsItSays_data()
{
    QTest::addColumn<double>("radius");
    for (double radius : {2.0, 3.0, 5.0, 8.0, 12.0})
        QTest::addRow("%g", radius) << radius;
}

void tst_Blur::keepsTheSumAndReachesAsFarAsItSays()
{
    QFETCH(double, radius);
    constexpr int half = 20;
    const QImage image = blurred(spot(half), radius);
    QVERIFY(std::abs(sum(image) - sum(spot(half))) < 0.005 * sum(spot(half)));
    const int beyond = middle + half + blurReach(radius) + 1;
    for (int y = 0; y < side; ++y)
        QCOMPARE(image.constScanLine(y)[beyond], uchar(0));
    QVERIFY(image.constScanLine(middle)[middle + half + 1] > 0);
    QVERIFY(blurReach(radius) <= std::ceil(1.5 * radius) + 1);
}

void tst_Blur::leavesAnEvenPlaneAlone()
{
    QImage plane(80, 80, QImage::Format_Alpha8);
    plane.fill(100);
    const QImage image = blurred(plane, 10);
    QCOMPARE(image.constScanLine(40)[40], uchar(100));
}

void tst_Blur::mixesColoursByTheirCoverage()
{
    QImage image(60, 20, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    for (int y = 0; y < 20; ++y) {
        for (int x = 20; x < 40; ++x)
            image.setPixelColor(x, y, x < 30 ? Qt::red : Qt::blue);
    }
    const QImage result = blurred(image, 6);
    QVERIFY(std::abs(qRed(result.pixel(29, 10)) - qBlue(result.pixel(30, 10))) <= 1);
    QVERIFY(qRed(result.pixel(29, 10)) > 100);
    QVERIFY(qBlue(result.pixel(29, 10)) > 70);
    // Fading out, the colour stays red: transparent black does not darken it.
    const QColor edge = result.pixelColor(17, 10);
    QVERIFY(edge.alpha() > 5 && edge.alpha() < 120);
    QVERIFY(edge.red() > 240);
    QCOMPARE(edge.blue(), 0);
}

void tst_Blur::treatsWhatLiesOutsideAsTransparent()
{
    QImage plane(80, 80, QImage::Format_Alpha8);
    plane.fill(200);
    const QImage image = blurred(plane, 10);
    QVERIFY(image.constScanLine(40)[0] > 60 && image.constScanLine(40)[0] < 120); // about half of it is missing
    QCOMPARE(image.constScanLine(40)[40], uchar(200));
}

void tst_Blur::doesNothingForNoRadius()
{
    QCOMPARE(blurred(spot(4), 0), spot(4));
    QVERIFY(blurred(QImage(), 8).isNull());
}

QTEST_MAIN(tst_Blur)
#include "tst_Blur.moc"
