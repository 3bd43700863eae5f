#include "themes/ThemeBackgroundView.h"

#include "support/PictureDifference.h"
#include "themes/PictureLayer.h"
#include "themes/ThemeImages.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

using namespace kelp;

class tst_ThemeBackgroundView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void midnightIsGreyUnderADarkGradient_data();
    void midnightIsGreyUnderADarkGradient();
    void aSolidColourFillsTheView();
    void aMissingPictureIsTheAccentFadingToBlack();
    void aPartLooksLikeThatPartOfTheWhole_data();
    void aPartLooksLikeThatPartOfTheWhole();
    void grainDotsAreInTheirPlaces();
    void grainStretchesWithTheView();
    void aBuiltInPictureStandsStillEnlargedAndLower();
    void aBuiltInPictureDrifts();
    void theUsersPictureIsStretchedAndDimmed();
    void theVignetteIsClearInTheMiddleAndDarkAtTheCorners();
    void aBackdropIsBlurredAndDarkened();
    void aSmallBackdropLooksLikeTheWholeOne();
    void untilItsPictureComesAViewIsBlack();
    void everyThemeIsTheSameTwice_data();
    void everyThemeIsTheSameTwice();
    void onlyWhatMovesAsksForFrames_data();
    void onlyWhatMovesAsksForFrames();
    void onlyWhatChangesIsPaintedAgain_data();
    void onlyWhatChangesIsPaintedAgain();
    void fewPixelsOfAPictureWithRainOrStarsChange();
    void everyPixelIsPaintedAtEveryDensity_data();
    void everyPixelIsPaintedAtEveryDensity();
};

namespace {

QImage painted(ThemeBackgroundView &view, QSize size, double density = 1)
{
    QImage image((QSizeF(size) * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    view.paint(painter, size, {});
    return image;
}

OverlayTheme with(const ThemeBackground &background)
{
    OverlayTheme theme = OverlayTheme::midnight();
    theme.background = background;
    return theme;
}

void allThemes()
{
    QTest::addColumn<QString>("id");
    for (const OverlayTheme &theme : OverlayTheme::all())
        QTest::newRow(qPrintable(theme.id)) << theme.id;
}

/// A checkerboard that shows where a picture's parts end up: dark on the left, lighter downwards.
QImage chart(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(255 * x / (size.width() - 1), 255 * y / (size.height() - 1), 128));
    }
    return image;
}

QImage stillOf(const OverlayTheme &theme, const BackgroundOptions &options, QSize size, Instant shown = {})
{
    ThemeBackgroundView view(theme, options);
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    view.paint(painter, size, shown);
    return image;
}

/// The opacity of all the black over a picture's middle and corner, for a theme that dims by `dim`.
constexpr double vignetteAtCorner = 0.45;

double h(double s, double k)
{
    const double x = std::sin(s + k) * 43758.5453;
    return x - std::floor(x);
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
    // Every pixel within a shade, and no bands: right on the average.
    OverlayTheme theme = with(CustomBackground{});
    theme.accent = QColor::fromRgbF(1, 0.72F, 0.42F);
    ThemeBackgroundView coloured(theme);
    const QImage wide = painted(coloured, {640, 400}, 1.5);
    for (int y = 0; y < wide.height(); ++y) {
        const double expected = 0.72 * 255 * 0.35 * (1 - (y + 0.5) / wide.height());
        double sum = 0;
        for (int x = 0; x < wide.width(); ++x) {
            QVERIFY(std::abs(qGreen(wide.pixel(x, y)) - expected) <= 1.01);
            sum += qGreen(wide.pixel(x, y));
        }
        QVERIFY(std::abs(sum / wide.width() - expected) < 0.2);
    }
}

void tst_ThemeBackgroundView::aPartLooksLikeThatPartOfTheWhole_data()
{
    allThemes();
}

void tst_ThemeBackgroundView::aPartLooksLikeThatPartOfTheWhole()
{
    QFETCH(QString, id);
    ThemeBackgroundView view(OverlayTheme::named(id));
    const QImage whole = painted(view, {400, 300});
    QImage part(400, 300, QImage::Format_RGB32);
    QPainter painter(&part);
    const QRect clip(133, 77, 101, 55);
    view.paint(painter, {400, 300}, {}, clip);
    painter.end();
    int greatest = 0;
    for (int y = clip.top(); y <= clip.bottom(); ++y) {
        for (int x = clip.left(); x <= clip.right(); ++x)
            greatest = std::max(greatest, std::abs(qGreen(part.pixel(x, y)) - qGreen(whole.pixel(x, y))));
    }
    QVERIFY2(greatest <= 3, qPrintable(QString::number(greatest)));
}

void tst_ThemeBackgroundView::grainDotsAreInTheirPlaces()
{
    // Paper at 8 pixels per point, so that single dots can be told apart.
    const QSize size(360, 225);
    ThemeBackgroundView view(OverlayTheme::named(QStringLiteral("paper")));
    const QImage image = painted(view, size, 8);
    const QColor paper = image.pixelColor(0, 0);
    QCOMPARE(paper, QColor(245, 240, 227));
    QImage expected(image.size(), QImage::Format_RGB32);
    expected.fill(paper);
    expected.setDevicePixelRatio(8);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < 6000; ++i) {
        const double s = i * 12.9898;
        QColor colour = h(s, 704.097) > 0.5 ? QColor(0, 0, 0) : QColor(255, 255, 255);
        colour.setAlphaF(h(s, 704.097) > 0.5 ? 0.06F : 0.25F);
        painter.fillRect(QRectF(size.width() * h(s, 547.631), size.height() * h(s, 625.864), 1.5, 1.5), colour);
    }
    painter.end();
    int different = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            different += std::abs(qGreen(image.pixel(x, y)) - qGreen(expected.pixel(x, y))) > 2;
    }
    QVERIFY2(different < image.width() * image.height() / 1000, qPrintable(QString::number(different)));
}

void tst_ThemeBackgroundView::grainStretchesWithTheView()
{
    // The first dot lies at the same part of a larger view.
    for (const QSize size : {QSize(400, 300), QSize(800, 900)}) {
        ThemeBackgroundView view(OverlayTheme::named(QStringLiteral("paper")));
        const QImage image = painted(view, size, 4);
        const double s = 11 * 12.9898;
        const QPointF middle(size.width() * h(s, 547.631) + 0.75, size.height() * h(s, 625.864) + 0.75);
        QVERIFY(image.pixelColor((middle * 4).toPoint()) != QColor(245, 240, 227));
    }
}

void tst_ThemeBackgroundView::aBuiltInPictureStandsStillEnlargedAndLower()
{
    OverlayTheme theme = OverlayTheme::named(QStringLiteral("zen"));
    theme.animation.reset();
    const QSize size(640, 400);
    const QImage shown = stillOf(theme, {}, size, Instant{1'000'000}); // the time is not to matter
    const QImage picture =
        ThemeImages::bundled(QStringLiteral("zen")).scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    // The middle part, where there is no vignette: scaled by 1.1 about the middle, then 2 % of the height down.
    double sum = 0;
    int count = 0;
    for (int y = 120; y < 300; y += 3) {
        for (int x = 200; x < 440; x += 3) {
            const double u = (x + 0.5 - 320) / 1.1 + 320;
            const double v = (y + 0.5 - 200 - 0.02 * 400) / 1.1 + 200;
            const double expected = qGreen(picture.pixel(static_cast<int>(u), static_cast<int>(v))) * (1 - 0.12);
            sum += std::abs(qGreen(shown.pixel(x, y)) - expected);
            ++count;
        }
    }
    QVERIFY2(sum / count < 2.5, qPrintable(QString::number(sum / count)));
}

void tst_ThemeBackgroundView::aBuiltInPictureDrifts()
{
    for (const double t : {0.0, 20.0, 100.0, 1e9}) {
        const Drift drift = Drift::at(t);
        QCOMPARE(drift.scale, 1.1 + 0.05 * std::sin(t / 23));
        QCOMPARE(drift.right, std::sin(t / 31) * 0.03);
        QCOMPARE(drift.down, std::cos(t / 37) * 0.02);
    }
    OverlayTheme theme = OverlayTheme::named(QStringLiteral("space"));
    theme.animation.reset();
    const QSize size(640, 400);
    const QImage start = stillOf(theme, {.animate = true}, size, Instant{0});
    QCOMPARE(stillOf(theme, {.animate = true}, size, Instant{0}), start);
    QVERIFY(stillOf(theme, {.animate = true}, size, Instant{60}) != start);
    QCOMPARE(stillOf(theme, {.animate = false}, size, Instant{60}), start);
}

void tst_ThemeBackgroundView::theUsersPictureIsStretchedAndDimmed()
{
    // At scale 1 and in its place, whatever its proportions.
    const QSize size(640, 400);
    const OverlayTheme theme = OverlayTheme::named(QStringLiteral("custom"));
    const BackgroundOptions options{.animate = true, .customDim = 0.45, .customPicture = chart({300, 300})};
    const QImage image = stillOf(theme, options, size, Instant{1e9});
    for (const QPoint point : {QPoint(320, 200), QPoint(250, 160), QPoint(400, 260)}) {
        const QColor colour = image.pixelColor(point);
        QVERIFY(std::abs(colour.red() - 255 * (point.x() + 0.5) / 640 * 0.55) <= 2);
        QVERIFY(std::abs(colour.green() - 255 * (point.y() + 0.5) / 400 * 0.55) <= 2);
    }
    const BackgroundOptions bright{.customDim = 0, .customPicture = chart({300, 300})};
    QVERIFY(std::abs(stillOf(theme, bright, size).pixelColor(320, 200).red() - 128) <= 2);
}

void tst_ThemeBackgroundView::theVignetteIsClearInTheMiddleAndDarkAtTheCorners()
{
    QImage white(64, 64, QImage::Format_RGB32);
    white.fill(Qt::white);
    const QSize size(800, 500);
    const QImage image =
        stillOf(OverlayTheme::named(QStringLiteral("custom")), {.customDim = 0, .customPicture = white}, size);
    QCOMPARE(image.pixelColor(400, 250), QColor(Qt::white));
    QCOMPARE(image.pixelColor(300, 200), QColor(Qt::white));
    const int corner = image.pixelColor(0, 0).red();
    QVERIFY(corner >= 255 * (1 - vignetteAtCorner) && corner < 255 * (1 - vignetteAtCorner) + 8);
    QVERIFY(std::abs(image.pixelColor(799, 499).red() - corner) <= 2);
    int last = 255;
    for (int i = 0; i <= 100; ++i) { // ever darker from the middle to the corner
        const int here = image.pixelColor(std::max(0, 400 - 4 * i), std::max(0, 250 - 5 * i / 2)).red();
        QVERIFY(here <= last + 1);
        last = here;
    }
}

void tst_ThemeBackgroundView::aBackdropIsBlurredAndDarkened()
{
    QImage board(1280, 800, QImage::Format_RGB32);
    for (int y = 0; y < board.height(); ++y) {
        for (int x = 0; x < board.width(); ++x)
            board.setPixel(x, y, (x / 4 + y / 4) % 2 ? 0xffffffff : 0xff000000);
    }
    const QImage image = stillOf(OverlayTheme::midnight(), {.backdrop = board}, {1280, 800});
    for (const int y : {0, 200, 400, 799}) {
        const double expected = 127.5 * (1 - (0.55 + 0.25 * (y + 0.5) / 800));
        for (int x = 0; x < 1280; x += 7)
            QVERIFY2(std::abs(image.pixelColor(x, y).green() - expected) <= 2.5,
                     qPrintable(QStringLiteral("%1,%2: %3 instead of %4")
                                    .arg(x)
                                    .arg(y)
                                    .arg(image.pixelColor(x, y).green())
                                    .arg(expected)));
    }
    // An edge in the backdrop becomes wide and soft.
    QPainter(&board).fillRect(0, 0, 640, 800, Qt::black);
    QPainter(&board).fillRect(640, 0, 640, 800, Qt::white);
    const QImage soft = stillOf(OverlayTheme::midnight(), {.backdrop = board}, {1280, 800});
    const double white = 255 * (1 - 0.675);
    QVERIFY(soft.pixelColor(500, 400).green() <= 2);
    QVERIFY(std::abs(soft.pixelColor(640, 400).green() - white / 2) < white / 10);
    QVERIFY(soft.pixelColor(625, 400).green() > white / 8);
    QVERIFY(std::abs(soft.pixelColor(780, 400).green() - white) <= 2);
}

void tst_ThemeBackgroundView::aSmallBackdropLooksLikeTheWholeOne()
{
    // As a live view gets it: an eighth of the screen.
    const QSize size(1280, 800);
    const QImage desktop = chart(size);
    const QImage eighth = desktop.scaled(size / 8, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QImage live = stillOf(OverlayTheme::midnight(), {.live = true, .backdrop = eighth}, size);
    const QImage still = stillOf(OverlayTheme::midnight(), {.backdrop = desktop}, size);
    for (int y = 0; y < size.height(); y += 9) {
        for (int x = 0; x < size.width(); x += 9) {
            const QColor a = live.pixelColor(x, y);
            const QColor b = still.pixelColor(x, y);
            QVERIFY2(std::abs(a.red() - b.red()) <= 3 && std::abs(a.blue() - b.blue()) <= 3,
                     qPrintable(QStringLiteral("%1,%2: %3 %4").arg(x).arg(y).arg(a.name(), b.name())));
        }
    }
}

void tst_ThemeBackgroundView::untilItsPictureComesAViewIsBlack()
{
    OverlayTheme theme = OverlayTheme::named(QStringLiteral("custom"));
    const QSize size(320, 200);
    ThemeBackgroundView view(theme, {.live = true, .customDim = 0, .pictureComes = true});
    QCOMPARE(painted(view, size).pixelColor(10, 10), QColor(Qt::black));
    QImage white(64, 64, QImage::Format_RGB32);
    white.fill(Qt::white);
    view.setPicture(white);
    QCOMPARE(painted(view, size), stillOf(theme, {.live = true, .customDim = 0, .customPicture = white}, size));
    view.setPicture({});
    QCOMPARE(painted(view, size), stillOf(theme, {.live = true}, size)); // what a missing picture looks like
}

void tst_ThemeBackgroundView::everyThemeIsTheSameTwice_data()
{
    allThemes();
}

void tst_ThemeBackgroundView::everyThemeIsTheSameTwice()
{
    QFETCH(QString, id);
    const OverlayTheme theme = OverlayTheme::named(id);
    const QImage first = stillOf(theme, {}, {1440, 900});
    QCOMPARE(stillOf(theme, {}, {1440, 900}, Instant{123456}), first); // without motion the time does not matter
    // The same view, after other times and sizes.
    ThemeBackgroundView view(theme, {.live = true, .animate = true});
    QImage image = painted(view, {300, 200});
    for (const double t : {5.0, 1e9}) {
        image = QImage(640, 400, QImage::Format_RGB32);
        QPainter painter(&image);
        view.paint(painter, {640, 400}, Instant{t});
    }
    QCOMPARE(image, stillOf(theme, {.live = true, .animate = true}, {640, 400}, Instant{1e9}));
}

void tst_ThemeBackgroundView::onlyWhatMovesAsksForFrames_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<bool>("moves");
    for (const char *id : {"aurora", "synthwave", "terminal", "zen", "space", "lofi"})
        QTest::newRow(id) << QString::fromLatin1(id) << true;
    for (const char *id : {"midnight", "paper", "custom"})
        QTest::newRow(id) << QString::fromLatin1(id) << false;
}

void tst_ThemeBackgroundView::onlyWhatMovesAsksForFrames()
{
    QFETCH(QString, id);
    QFETCH(bool, moves);
    const OverlayTheme theme = OverlayTheme::named(id);
    const QSizeF size(800, 500);
    QCOMPARE(ThemeBackgroundView(theme, {.live = true, .animate = true}).movingPart(size).isEmpty(), !moves);
    QVERIFY(ThemeBackgroundView(theme, {.live = true, .animate = false}).movingPart(size).isEmpty());
    QVERIFY(ThemeBackgroundView(theme, {.live = false, .animate = true}).movingPart(size).isEmpty());
    const double interval = ThemeBackgroundView(theme, {.live = true, .animate = true}).leastInterval();
    QVERIFY(interval >= 1.0 / 30 && interval <= 1.0 / 8);
}

void tst_ThemeBackgroundView::onlyWhatChangesIsPaintedAgain_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<double>("density");
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        for (const double density : {1.0, 1.25, 2.0})
            QTest::addRow("%s at %g", qPrintable(theme.id), density) << theme.id << density;
    }
}

void tst_ThemeBackgroundView::onlyWhatChangesIsPaintedAgain()
{
    QFETCH(QString, id);
    QFETCH(double, density);
    const OverlayTheme theme = OverlayTheme::named(id);
    const BackgroundOptions options{.live = true, .animate = true};
    const QSize size(320, 200);
    const auto image = [&] {
        QImage made((QSizeF(size) * density).toSize(), QImage::Format_RGB32);
        made.setDevicePixelRatio(density);
        return made;
    };
    ThemeBackgroundView view(theme, options);
    QImage shown = image();
    Instant before{1'700'000'000.02};
    {
        QPainter painter(&shown);
        view.paint(painter, size, before);
    }
    for (int frame = 1; frame <= 5; ++frame) {
        const Instant now = before + 1.0 / 30;
        const QRegion part = view.changed(size, before, now);
        if (!part.isEmpty()) {
            QPainter painter(&shown);
            view.paint(painter, size, now, part);
        }
        QImage whole = image();
        QPainter painter(&whole);
        ThemeBackgroundView(theme, options).paint(painter, size, now);
        painter.end();
        // Qt draws smoothed lines a little differently under a clip. A streak left behind differs by 40 levels.
        QVERIFY(test::greatestDifference(shown, whole) <= 4);
        before = now;
    }
}

void tst_ThemeBackgroundView::fewPixelsOfAPictureWithRainOrStarsChange()
{
    const QSize size(1440, 900);
    for (const auto &[id, most] : {std::pair("space", 0.05), {"lofi", 0.3}, {"zen", 0.0}}) {
        ThemeBackgroundView view(OverlayTheme::named(QString::fromLatin1(id)), {.live = true, .animate = true});
        painted(view, size);
        const auto changed = [&](double from, double to) {
            double pixels = 0;
            for (const QRect &each : view.changed(size, Instant{from}, Instant{to}))
                pixels += double{1} * each.width() * each.height();
            return pixels / (1440 * 900);
        };
        QVERIFY2(changed(1000.01, 1000.04) <= most, id);
        QCOMPARE(changed(1000.06, 1000.21), 1.0); // the picture has moved
    }
}

void tst_ThemeBackgroundView::everyPixelIsPaintedAtEveryDensity_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<double>("density");
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        for (const double density : {1.0, 1.25, 1.5, 2.0, 3.0})
            QTest::addRow("%s at %g", qPrintable(theme.id), density) << theme.id << density;
    }
}

void tst_ThemeBackgroundView::everyPixelIsPaintedAtEveryDensity()
{
    QFETCH(QString, id);
    QFETCH(double, density);
    ThemeBackgroundView view(OverlayTheme::named(id));
    for (const QSize size : {QSize(321, 203), QSize(61, 100), QSize(2, 3)}) {
        const QImage image = painted(view, size, density);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                QVERIFY2(image.pixel(x, y) != qRgb(255, 0, 255),
                         qPrintable(QString::number(x) + u',' + QString::number(y)));
        }
    }
}

QTEST_MAIN(tst_ThemeBackgroundView)
#include "tst_ThemeBackgroundView.moc"
