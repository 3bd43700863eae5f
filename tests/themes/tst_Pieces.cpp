#include "themes/Pieces.h"

#include <QImage>
#include <QPainter>
#include <QTest>

using namespace kelp;

class tst_Pieces : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPixelIsPaintedOnce_data();
    void everyPixelIsPaintedOnce();
    void pixelsOnAnEdgeBelongToThePiece();
    void thePaintersOwnClipHolds();
    void thePainterIsLeftAsItWas();
    void smallPiecesStayOnThisThread();
};

namespace {

constexpr int step = 16; // what one painting adds to black

const QRect view(0, 0, 400, 240);

QRegion scattered()
{
    QRegion region;
    for (int i = 0; i < 40; ++i)
        region += QRect(i * 37 % 380, i * 53 % 220, 4 + i % 15, 3 + i % 12);
    return region;
}

QImage canvas(double density)
{
    QImage image((QSizeF(view.size()) * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    image.fill(Qt::black);
    return image;
}

/// Adds a step to all that can be seen.
void lighten(QPainter &painter)
{
    painter.setCompositionMode(QPainter::CompositionMode_Plus);
    painter.fillRect(view, QColor(step, step, step));
}

int lightAt(const QImage &image, const QPoint &point)
{
    const double density = image.devicePixelRatio();
    return qGreen(image.pixel((QPointF(point) * density).toPoint()));
}

} // namespace

void tst_Pieces::everyPixelIsPaintedOnce_data()
{
    QTest::addColumn<bool>("small");
    QTest::addColumn<double>("density");
    for (const double density : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        QTest::addRow("pieces, density %g", density) << false << density;
        QTest::addRow("small pieces, density %g", density) << true << density;
    }
}

void tst_Pieces::everyPixelIsPaintedOnce()
{
    QFETCH(bool, small);
    QFETCH(double, density);
    const QRegion region = scattered();
    QImage image = canvas(density);
    QPainter painter(&image);
    int pieces = 0;
    const auto paint = [&](const QRectF &piece) {
        QVERIFY(region.intersects(piece.toAlignedRect()));
        ++pieces;
        lighten(painter);
    };
    if (small)
        forEachSmallPiece(painter, region, paint);
    else
        forEachPiece(painter, region, paint);
    painter.end();
    QVERIFY(pieces > 20);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRectF pixel(QPointF(x, y) / density, QSizeF(1, 1) / density);
            // The points that the pixel touches, or is touched by.
            const bool isTouched = region.intersects(pixel.adjusted(1e-6, 1e-6, -1e-6, -1e-6).toAlignedRect());
            QCOMPARE(qGreen(image.pixel(x, y)), isTouched ? step : 0);
        }
    }
}

/// At 1.25 the point 10 ends in the middle of a pixel.
void tst_Pieces::pixelsOnAnEdgeBelongToThePiece()
{
    QImage image = canvas(1.25);
    QPainter painter(&image);
    forEachPiece(painter, QRect(10, 10, 10, 10), [&](const QRectF &) { lighten(painter); });
    painter.end();
    QRect lit;
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 40; ++x) {
            if (qGreen(image.pixel(x, y)) > 0)
                lit |= QRect(x, y, 1, 1);
        }
    }
    QCOMPARE(lit, QRect(QPoint(12, 12), QPoint(24, 24)));
}

void tst_Pieces::thePaintersOwnClipHolds()
{
    const QRegion region = scattered();
    const QRect mine(100, 60, 150, 90);
    QImage image = canvas(1);
    QPainter painter(&image);
    painter.setClipRect(mine);
    forEachPiece(painter, region, [&](const QRectF &) { lighten(painter); });
    painter.end();
    for (int y = 0; y < view.height(); ++y) {
        for (int x = 0; x < view.width(); ++x)
            QCOMPARE(lightAt(image, {x, y}), (region & mine).contains(QPoint(x, y)) ? step : 0);
    }
}

void tst_Pieces::thePainterIsLeftAsItWas()
{
    QImage image = canvas(1.25);
    QPainter painter(&image);
    const QTransform before = painter.transform();
    forEachPiece(painter, scattered(), [&](const QRectF &) { painter.setOpacity(0.5); });
    QVERIFY(!painter.hasClipping());
    QCOMPARE(painter.transform(), before);
    QCOMPARE(painter.opacity(), 1.0);
}

void tst_Pieces::smallPiecesStayOnThisThread()
{
    QImage image(3840, 2160, QImage::Format_RGB32);
    image.setDevicePixelRatio(2);
    QPainter painter(&image);
    double covered = 0;
    forEachSmallPiece(painter, QRect(0, 0, 1920, 1080), [&](const QRectF &piece) {
        const double pixels = piece.width() * 2 * piece.height() * 2;
        QVERIFY(pixels < 2 << 16);
        covered += pixels;
    });
    QCOMPARE(covered, 3840.0 * 2160);
}

QTEST_MAIN(tst_Pieces)

#include "tst_Pieces.moc"
