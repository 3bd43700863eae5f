#include "support/PictureDifference.h"
#include "themes/ThemeBackgroundView.h"

#include <QPainter>
#include <QTest>

#include <array>

using namespace kelp;
using namespace Qt::StringLiterals;

/// A background that stands still, painted again in parts while a countdown over it runs and buttons light up.
class tst_StillBackground : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void partsShowWhatTheWholeShows_data();
    void partsShowWhatTheWholeShows();
};

namespace {

/// No two pixels that lie near each other are alike.
QImage noise(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    quint32 state = 1;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            state = state * 1664525 + 1013904223; // Numerical Recipes
            image.setPixel(x, y, 0xff000000 | (state >> 8));
        }
    }
    return image;
}

QImage canvas(QSize size, double density)
{
    QImage image((QSizeF(size) * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    image.fill(Qt::magenta);
    return image;
}

} // namespace

void tst_StillBackground::partsShowWhatTheWholeShows_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<double>("density");
    for (const QString &id : {u"custom"_s, u"paper"_s}) {
        for (const double density : {1.0, 1.25, 2.0})
            QTest::addRow("%s, %g", qPrintable(id), density) << id << density;
    }
}

void tst_StillBackground::partsShowWhatTheWholeShows()
{
    QFETCH(QString, id);
    QFETCH(double, density);
    BackgroundOptions options;
    options.customPicture = noise({640, 400});
    ThemeBackgroundView view(OverlayTheme::named(id), options);
    // A digit, the one before it too, the digit again, a button, the whole card, what reaches to the edges.
    const std::array parts{QRect(301, 121, 17, 33), QRect(279, 121, 39, 33), QRect(301, 121, 17, 33),
                           QRect(222, 301, 90, 31), QRect(301, 121, 17, 33), QRect(120, 60, 400, 290),
                           QRect(0, 0, 3, 2),       QRect(637, 390, 3, 10),  QRect(301, 121, 17, 33)};
    for (const QSize size : {QSize(640, 400), QSize(660, 410)}) {
        QImage whole = canvas(size, density);
        {
            QPainter painter(&whole);
            view.paint(painter, size, {});
        }
        QImage expected = canvas(size, density);
        for (const QRect &part : parts) {
            QImage shown = canvas(size, density);
            QPainter painter(&shown);
            view.paint(painter, size, {}, part);
            painter.end();
            const QRect inside =
                QRectF(QPointF(part.topLeft()) * density, QSizeF(part.size()) * density).toAlignedRect();
            expected.fill(Qt::magenta);
            for (int y = inside.top(); y <= inside.bottom(); ++y) {
                for (int x = inside.left(); x <= inside.right(); ++x)
                    expected.setPixel(x, y, whole.pixel(x, y));
            }
            const int difference = test::greatestDifference(shown, expected);
            QVERIFY2(difference == 0, qPrintable(u"%1 of %2: %3"_s.arg(part.x()).arg(size.width()).arg(difference)));
        }
    }
}

QTEST_MAIN(tst_StillBackground)
#include "tst_StillBackground.moc"
