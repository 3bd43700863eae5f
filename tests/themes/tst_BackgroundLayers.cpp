#include "themes/ThemeBackgroundView.h"

#include "support/SampleThemes.h"
#include "themes/PictureLayer.h"
#include "themes/ThemeImages.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>

using namespace kelp;
using namespace Qt::StringLiterals;

/// What the layers of a background have to do with each other, and with the screen that they are painted for.
class tst_BackgroundLayers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsAScaleThatKeepsThePixels_data();
    void followsAScaleThatKeepsThePixels();
    void theLayerIsWholeWithoutItsPicture_data();
    void theLayerIsWholeWithoutItsPicture();
    void aBuiltInPictureDriftsSideways();
};

namespace {

QImage painted(ThemeBackgroundView &view, QSize size, double density = 1, Instant shown = {})
{
    QImage image((QSizeF(size) * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    view.paint(painter, size, shown);
    return image;
}

QImage painted(const OverlayTheme &theme, const BackgroundOptions &options, QSize size, Instant shown = {})
{
    ThemeBackgroundView view(theme, options);
    return painted(view, size, 1, shown);
}

} // namespace

void tst_BackgroundLayers::followsAScaleThatKeepsThePixels_data()
{
    QTest::addColumn<QString>("id");
    for (const char *id : {"midnight", "paper", "aurora", "custom"})
        QTest::newRow(id) << QString::fromLatin1(id);
}

/// As when a screen's scale is set from 200 % to 100 %: it has as many pixels, and twice as many points.
void tst_BackgroundLayers::followsAScaleThatKeepsThePixels()
{
    QFETCH(QString, id);
    const OverlayTheme theme = OverlayTheme::named(id);
    ThemeBackgroundView view(theme);
    ThemeBackgroundView fresh(theme);
    static_cast<void>(painted(view, {1280, 720}, 2));
    QCOMPARE(painted(view, {2560, 1440}, 1), painted(fresh, {2560, 1440}, 1));
}

void tst_BackgroundLayers::theLayerIsWholeWithoutItsPicture_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<bool>("comes");
    QTest::newRow("fog, missing") << u"zen"_s << false;
    QTest::newRow("fog, being decoded") << u"zen"_s << true;
    QTest::newRow("rain, missing") << u"lofi"_s << false;
    QTest::newRow("rain, being decoded") << u"lofi"_s << true;
}

void tst_BackgroundLayers::theLayerIsWholeWithoutItsPicture()
{
    QFETCH(QString, id);
    QFETCH(bool, comes);
    OverlayTheme theme = OverlayTheme::named(id);
    theme.background = ImageBackground{u"none of this name"_s, 0};
    const BackgroundOptions options{.pictureComes = comes};
    const QSize size(640, 400);
    // All of the layer over black, as it is seen over a black picture.
    QImage black(64, 40, QImage::Format_RGB32);
    black.fill(Qt::black);
    ThemeBackgroundView withPicture(theme, {.pictureComes = true});
    withPicture.setPicture(black);
    const QImage overBlack = painted(withPicture, size);
    const QImage whole = painted(theme, options, size);
    if (comes) {
        QCOMPARE(whole, overBlack);
        return;
    }
    // Over the stand-in it is as bright, but for what fog hides of that.
    theme.animation.reset();
    const QImage base = painted(theme, options, size);
    double light = 0;
    double expected = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            light += qGray(whole.pixel(x, y)) - qGray(base.pixel(x, y));
            expected += qGray(overBlack.pixel(x, y));
        }
    }
    QVERIFY(expected > 0);
    QVERIFY2(light > 0.75 * expected, qPrintable(u"%1 of %2"_s.arg(light).arg(expected)));
}

void tst_BackgroundLayers::aBuiltInPictureDriftsSideways()
{
    const OverlayTheme theme = sample::still(u"lofi"_s);
    const QSize size(640, 400);
    const double t = 31 * std::acos(-1.0) / 2; // farthest to the right
    const QImage shown = painted(theme, {.animate = true}, size, Instant{t});
    const QImage picture =
        ThemeImages::bundled(u"lofi"_s).scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const double scale = 1.1 + 0.05 * std::sin(t / 23);
    // The mean difference from the picture moved to the right by that part of the width, in the middle, where there is
    // no vignette.
    const auto difference = [&](double right) {
        double sum = 0;
        int count = 0;
        for (int y = 120; y < 300; y += 3) {
            for (int x = 200; x < 440; x += 3) {
                const double u = (x + 0.5 - 320 - right * 640) / scale + 320;
                const double v = (y + 0.5 - 200 - std::cos(t / 37) * 0.02 * 400) / scale + 200;
                const double expected = qGreen(picture.pixel(static_cast<int>(u), static_cast<int>(v))) * (1 - 0.2);
                sum += std::abs(qGreen(shown.pixel(x, y)) - expected);
                ++count;
            }
        }
        return sum / count;
    };
    QVERIFY2(difference(0.03) < 3, qPrintable(QString::number(difference(0.03))));
    QVERIFY2(difference(0) > 3 * difference(0.03), qPrintable(QString::number(difference(0))));
    QVERIFY(difference(-0.03) > difference(0));
}

QTEST_MAIN(tst_BackgroundLayers)
#include "tst_BackgroundLayers.moc"
