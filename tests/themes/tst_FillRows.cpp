#include "themes/scenes/FillRows.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace kelp;

class tst_FillRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void edgesAreBlended_data();
    void edgesAreBlended();
    void anOpacityIsKept();
};

/// As much of each row is covered as the frame covers of it, at every density.
void tst_FillRows::edgesAreBlended_data()
{
    QTest::addColumn<QRectF>("frame");
    QTest::newRow("whole rows") << QRectF(4, 6, 8, 5);
    QTest::newRow("parts of two rows") << QRectF(4, 6.25, 8, 5);
    QTest::newRow("within a row") << QRectF(4, 6.3, 8, 0.4);
    QTest::newRow("over the edge of a row") << QRectF(4, 6.8, 8, 0.4);
    QTest::newRow("up to the edge of a row") << QRectF(4, 6.5, 8, 0.5);
    QTest::newRow("above the view") << QRectF(4, -2.5, 8, 5);
}

void tst_FillRows::edgesAreBlended()
{
    QFETCH(QRectF, frame);
    for (const int density : {1, 2, 3}) {
        QImage image(QSize(16, 16) * density, QImage::Format_RGB32);
        image.setDevicePixelRatio(density);
        image.fill(Qt::black);
        QPainter painter(&image);
        scenes::fillRows(painter, frame, Qt::white);
        painter.end();
        for (int y = 0; y < image.height(); ++y) {
            const double top = static_cast<double>(y) / density;
            const double bottom = (y + 1.0) / density;
            const double covered =
                std::max(0.0, std::min(bottom, frame.bottom()) - std::max(top, frame.top())) * density;
            for (int x = 0; x < image.width(); ++x) {
                const bool inside = x >= 4 * density && x < 12 * density;
                QVERIFY(std::abs(qGreen(image.pixel(x, y)) - (inside ? covered * 255 : 0)) <= 1);
            }
        }
    }
}

void tst_FillRows::anOpacityIsKept()
{
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    scenes::fillRows(painter, QRectF(0, 0.5, 4, 2), QColor(255, 255, 255, 100));
    painter.end();
    QVERIFY(std::abs(qGreen(image.pixel(1, 0)) - 50) <= 1);
    QVERIFY(std::abs(qGreen(image.pixel(1, 1)) - 100) <= 1);
    QVERIFY(std::abs(qGreen(image.pixel(1, 2)) - 50) <= 1);
    QCOMPARE(qGreen(image.pixel(1, 3)), 0);
}

QTEST_MAIN(tst_FillRows)

#include "tst_FillRows.moc"
