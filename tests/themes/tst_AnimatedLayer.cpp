#include "themes/AnimatedLayer.h"

#include "themes/Scatter.h"
#include "themes/SoftImage.h"
#include "themes/ThemeBackgroundView.h"
#include "themes/scenes/Scenes.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_AnimatedLayer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeIsCountedFrom2001AndStandsStillAt40();
    void starsAreInTheirPlacesAndHaveTheirSizes();
    void starsTwinkleAtTheirOwnRates();
    void everyStarIsPainted();
    void rainFallsOverLights();
    void noRainFallsInside();
    void aSceneIsTheSameEveryTime_data();
    void aSceneIsTheSameEveryTime();
    void aSceneMovesSmoothly_data();
    void aSceneMovesSmoothly();
    void nothingMovesOutsideTheMovingPart();
};

namespace {

const QSize size(480, 300);

QImage painted(AnimatedKind kind, double t, QSize view = size)
{
    OverlayTheme theme = OverlayTheme::midnight();
    theme.background = SolidBackground{Qt::black};
    theme.animation = kind;
    QImage image(view, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    ThemeBackgroundView(theme, {.animate = true}).paint(painter, view, Instant{978307200 + t});
    return image;
}

void allKinds()
{
    QTest::addColumn<AnimatedKind>("kind");
    QTest::newRow("aurora") << AnimatedKind::Aurora;
    QTest::newRow("starfield") << AnimatedKind::Starfield;
    QTest::newRow("scanlines") << AnimatedKind::Scanlines;
    QTest::newRow("rain") << AnimatedKind::Rain;
    QTest::newRow("synthwave") << AnimatedKind::Synthwave;
    QTest::newRow("fog") << AnimatedKind::Fog;
}

/// Mean and greatest difference of the green channel.
std::pair<double, int> difference(const QImage &a, const QImage &b)
{
    double sum = 0;
    int greatest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const int here = std::abs(qGreen(a.pixel(x, y)) - qGreen(b.pixel(x, y)));
            sum += here;
            greatest = std::max(greatest, here);
        }
    }
    return {sum / (a.width() * a.height()), greatest};
}

/// What the description of the star scene says of star `i`, computed on its own.
struct Star
{
    QRectF frame;
    double opacity;
};

double h(int i, double k)
{
    const double x = std::sin(i * 12.9898 + k) * 43758.5453;
    return x - std::floor(x);
}

Star star(int i, const QSizeF &view, double t)
{
    const double d = 0.6 + 1.8 * h(i, 234.699);
    const double opacity = 0.25 + 0.75 * (0.5 + 0.5 * std::sin(6.28 * h(i, 391.165) + (0.6 + 2.2 * h(i, 312.932)) * t));
    return {QRectF(view.width() * h(i, 78.233), view.height() * h(i, 156.466), d, d), opacity};
}

/// The light in a part of the picture, in pixels of full white.
double lightIn(const QImage &image, const QRect &part)
{
    double sum = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x)
            sum += qGreen(image.pixel(x, y)) / 255.0;
    }
    return sum;
}

} // namespace

void tst_AnimatedLayer::timeIsCountedFrom2001AndStandsStillAt40()
{
    const AnimatedLayer moving{AnimatedKind::Aurora, true};
    QCOMPARE(moving.time(Instant{978307200}), 0.0);
    QCOMPARE(moving.time(Instant{1767261600.5}), 788954400.5);
    const AnimatedLayer still{AnimatedKind::Aurora, false};
    QCOMPARE(still.time(Instant{1767261600.5}), 40.0);
}

void tst_AnimatedLayer::starsAreInTheirPlacesAndHaveTheirSizes()
{
    const QSize view(1440, 900);
    const QImage image = painted(AnimatedKind::Starfield, 40, view);
    int measured = 0;
    for (int i = 0; i < 260; ++i) {
        const Star expected = star(i, view, 40);
        QVERIFY(expected.frame.width() >= 0.6 && expected.frame.width() <= 2.4);
        const QRect around = expected.frame.toAlignedRect().adjusted(-1, -1, 1, 1);
        bool alone = QRect(QPoint(), view).contains(around);
        for (int other = 0; other < 260 && alone; ++other)
            alone = other == i || !star(other, view, 40).frame.adjusted(-1, -1, 1, 1).intersects(around);
        if (!alone)
            continue;
        ++measured;
        const double light = lightIn(image, around);
        const double area = M_PI / 4 * expected.frame.width() * expected.frame.height();
        // Small ellipses are rasterized coarsely.
        QVERIFY2(std::abs(light - area * expected.opacity) < 0.06 + 0.15 * area * expected.opacity,
                 qPrintable(u"star %1: %2 instead of %3"_s.arg(i).arg(light).arg(area * expected.opacity)));
    }
    QVERIFY(measured > 200);
}

void tst_AnimatedLayer::starsTwinkleAtTheirOwnRates()
{
    // All the light of the larger stars together. Qt paints small ellipses as polygons, a tenth too small.
    const QSize view(1440, 900);
    for (const double t : {0.0, 1.0, 7.5}) {
        const QImage image = painted(AnimatedKind::Starfield, t, view);
        double light = 0;
        double expected = 0;
        for (int i = 0; i < 260; ++i) {
            const Star each = star(i, view, t);
            const QRect around = each.frame.toAlignedRect().adjusted(-1, -1, 1, 1) & image.rect();
            if (each.frame.width() < 2)
                continue;
            light += lightIn(image, around);
            expected += M_PI / 4 * each.frame.width() * each.frame.height() * each.opacity;
        }
        QVERIFY2(std::abs(light / expected - 0.92) < 0.06, qPrintable(QString::number(light / expected)));
    }
}

void tst_AnimatedLayer::everyStarIsPainted()
{
    const QSize view(1440, 900);
    const QImage image = painted(AnimatedKind::Starfield, 40, view);
    for (int i = 0; i < 260; ++i) {
        const QRect around = star(i, view, 40).frame.toAlignedRect() & image.rect();
        if (!around.isEmpty())
            QVERIFY2(lightIn(image, around) > 0.02, qPrintable(QString::number(i)));
    }
    // And nothing else: almost all of the sky is black.
    int lit = 0;
    for (int y = 0; y < view.height(); ++y) {
        for (int x = 0; x < view.width(); ++x)
            lit += qGreen(image.pixel(x, y)) > 0;
    }
    QVERIFY(lit > 260 && lit < 260 * 12);
}

void tst_AnimatedLayer::rainFallsOverLights()
{
    SoftImage lights;
    lights.prepare(size);
    lights.fill(Floats{0, 0, 0, 1});
    AnimatedLayer{AnimatedKind::Rain, true}.paintSoft(lights, 40);
    int lit = 0;
    for (int y = 0; y < lights.height(); ++y) {
        for (int x = 0; x < lights.width(); ++x)
            lit += lights.row(y)[x].lanes[2] > 0.05F;
    }
    QVERIFY(lit > lights.width() * lights.height() / 100);

    QImage streaks(size, QImage::Format_RGB32);
    streaks.fill(Qt::black);
    QPainter painter(&streaks);
    AnimatedLayer{AnimatedKind::Rain, true}.paintSharp(painter, size, 40, streaks.rect());
    painter.end();
    QVERIFY(lightIn(streaks, streaks.rect()) > 20);
}

/// Of the picture it falls over, the plant is at the lower right, and a table along the lower edge.
void tst_AnimatedLayer::noRainFallsInside()
{
    QImage streaks(size, QImage::Format_RGB32);
    streaks.fill(Qt::black);
    QPainter painter(&streaks);
    for (double t = 0; t < 40; t += 0.2)
        AnimatedLayer{AnimatedKind::Rain, true}.paintSharp(painter, size, t, streaks.rect());
    painter.end();
    const auto part = [&](double left, double top) {
        return QRect(QPointF(size.width() * left, size.height() * top).toPoint(), streaks.rect().bottomRight());
    };
    QCOMPARE(lightIn(streaks, part(0.77, 0.57)), 0.0);
    QCOMPARE(lightIn(streaks, part(0, 0.77)), 0.0);
    QVERIFY(lightIn(streaks, part(0, 0)) > 2000);
}

void tst_AnimatedLayer::aSceneIsTheSameEveryTime_data()
{
    allKinds();
}

void tst_AnimatedLayer::aSceneIsTheSameEveryTime()
{
    QFETCH(AnimatedKind, kind);
    const QImage first = painted(kind, 788954400.5);
    QCOMPARE(painted(kind, 788954400.5), first);
    QVERIFY(first != painted(kind, 788954409.5));
}

void tst_AnimatedLayer::aSceneMovesSmoothly_data()
{
    allKinds();
}

/// From frame to frame little changes, a second later something does, and years later the scene looks alike.
void tst_AnimatedLayer::aSceneMovesSmoothly()
{
    QFETCH(AnimatedKind, kind);
    const auto brightness = [](const QImage &image) { return lightIn(image, image.rect()); };
    const double usual = brightness(painted(kind, 40));
    double last = usual;
    for (const double start : {40.0, 788954400.0}) {
        QImage before = painted(kind, start);
        for (int frame = 1; frame <= 30; ++frame) {
            const QImage now = painted(kind, start + frame / 30.0);
            QVERIFY(difference(before, now).first < 4);
            before = now;
        }
        QVERIFY(difference(painted(kind, start), before).first > 0.0005);
        last = brightness(before);
        QVERIFY(last > usual / 3 && last < usual * 3);
    }
}

void tst_AnimatedLayer::nothingMovesOutsideTheMovingPart()
{
    QImage before = painted(AnimatedKind::Synthwave, 40);
    QImage after = painted(AnimatedKind::Synthwave, 40.9);
    QVERIFY(before != after);
    const QRect moving = scenes::synthwaveMovingPart(size).toAlignedRect();
    QVERIFY(moving.height() < size.height() / 3);
    for (QImage *image : {&before, &after})
        QPainter(image).fillRect(moving, Qt::black);
    QCOMPARE(after, before);
}

QTEST_MAIN(tst_AnimatedLayer)
#include "tst_AnimatedLayer.moc"
