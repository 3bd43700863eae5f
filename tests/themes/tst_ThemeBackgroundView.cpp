#include "themes/ThemeBackgroundView.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <cmath>

using namespace kelp;

class tst_ThemeBackgroundView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void midnightIsGreyUnderADarkGradient_data();
    void midnightIsGreyUnderADarkGradient();
    void aSolidColourFillsTheView();
    void aMissingPictureIsTheAccentFadingToBlack();
    void aPartLooksLikeThatPartOfTheWhole();
};

namespace {

QImage painted(ThemeBackgroundView &view, QSize size, double density = 1)
{
    QImage image((QSizeF(size) * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    view.paint(painter, size);
    return image;
}

OverlayTheme with(const ThemeBackground &background)
{
    OverlayTheme theme = OverlayTheme::midnight();
    theme.background = background;
    return theme;
}

} // namespace

void tst_ThemeBackgroundView::midnightIsGreyUnderADarkGradient_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("density");
    QTest::newRow("1440x900") << QSize(1440, 900) << 1.0;
    QTest::newRow("dense") << QSize(1920, 1080) << 2.0;
    QTest::newRow("fraction") << QSize(801, 601) << 1.25;
    QTest::newRow("tiny") << QSize(3, 2) << 1.0;
}

void tst_ThemeBackgroundView::midnightIsGreyUnderADarkGradient()
{
    QFETCH(QSize, size);
    QFETCH(double, density);
    ThemeBackgroundView view(OverlayTheme::midnight());
    const QImage image = painted(view, size, density);
    for (int y = 0; y < image.height(); ++y) {
        const double dim = 0.55 + 0.25 * (y + 0.5) / image.height();
        const double expected = 255 * 0.2 * (1 - dim);
        double sum = 0;
        for (int x = 0; x < image.width(); ++x) {
            const QColor colour = image.pixelColor(x, y);
            QVERIFY(colour.red() == colour.green() && colour.green() == colour.blue());
            QVERIFY(std::abs(colour.red() - expected) < 1);
            sum += colour.red();
        }
        if (image.width() > 100)
            QVERIFY(std::abs(sum / image.width() - expected) < 0.1); // no bands: right on the average
    }
}

void tst_ThemeBackgroundView::aSolidColourFillsTheView()
{
    ThemeBackgroundView view(with(SolidBackground{QColor(245, 240, 227)}));
    const QImage image = painted(view, {50, 30});
    QCOMPARE(image.pixelColor(0, 0), QColor(245, 240, 227));
    QCOMPARE(image.pixelColor(49, 29), QColor(245, 240, 227));
}

void tst_ThemeBackgroundView::aMissingPictureIsTheAccentFadingToBlack()
{
    ThemeBackgroundView view(with(CustomBackground{}));
    const QImage image = painted(view, {50, 400});
    QVERIFY(std::abs(image.pixelColor(25, 0).red() - 0.35 * 255) <= 2);
    QVERIFY(image.pixelColor(25, 399).red() <= 2);
}

void tst_ThemeBackgroundView::aPartLooksLikeThatPartOfTheWhole()
{
    ThemeBackgroundView view(OverlayTheme::midnight());
    const QImage whole = painted(view, {400, 300});
    QImage part(400, 300, QImage::Format_RGB32);
    QPainter painter(&part);
    const QRect clip(133, 77, 101, 55);
    painter.setClipRect(clip);
    view.paint(painter, {400, 300});
    painter.end();
    QCOMPARE(part.copy(clip), whole.copy(clip));
}

QTEST_MAIN(tst_ThemeBackgroundView)
#include "tst_ThemeBackgroundView.moc"
