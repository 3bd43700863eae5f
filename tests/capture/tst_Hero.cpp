#include "capture/ClipFrames.h"
#include "capture/DesktopScene.h"
#include "capture/Hero.h"
#include "overlay/CardTags.h"

#include <QPainter>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Looks at the clip at its beginning, at the time of its poster and at its end, at one pixel a point.
class tst_Hero : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theOverlayComesAndGoes();
    void beginsWithTheDesktop();
    void thePosterIsTheReminder();
    void endsWithTheDesktop();
};

namespace {

constexpr double lastFrame = Hero::seconds - 1.0 / Recorder::framesPerSecond;
constexpr QPoint resting(842, 668); ///< the pointer's tip until it sets out
constexpr int tolerance = 3;        ///< what is blended in two steps may be off by a shade

QImage heroAt(double t)
{
    return frameOf(clipNamed(u"hero"_s).frames(), t, 1);
}

QImage desktop(const QString &typed, bool caret)
{
    QImage image = blankFrame(1);
    QPainter painter(&image);
    DesktopScene().paint(painter, typed, caret);
    return image;
}

/// All that the pointer may cover.
QRect pointerAt(const QPoint &tip)
{
    return {tip - QPoint(4, 4), QSize(26, 34)};
}

/// Where the pictures differ, there is the pointer and nothing else.
void compareAwayFromPointer(const QImage &found, const QImage &expected, const QPoint &tip)
{
    const QRect different = differentPart(found, expected, tolerance);
    QVERIFY2(different.contains(tip + QPoint(3, 10)), "there is no pointer");
    QVERIFY2(pointerAt(tip).contains(different),
             qPrintable(u"they differ at %1, %2 in %3 × %4 points"_s.arg(different.x())
                            .arg(different.y())
                            .arg(different.width())
                            .arg(different.height())));
}

} // namespace

void tst_Hero::theOverlayComesAndGoes()
{
    QCOMPARE(Hero::cover(0), 0.0);
    QCOMPARE(Hero::cover(Hero::poster), 1.0);
    QCOMPARE(Hero::cover(lastFrame), 0.0);
    const auto step = [](double t) { return Hero::cover(t + 1.0 / Recorder::framesPerSecond) - Hero::cover(t); };
    for (double t = 0; t < Hero::poster; t += 0.1)
        QVERIFY(step(t) >= 0 && step(t) < 0.1);
    for (double t = Hero::poster; t < lastFrame; t += 0.1)
        QVERIFY(step(t) <= 0 && step(t) > -0.1);
}

void tst_Hero::beginsWithTheDesktop()
{
    compareAwayFromPointer(heroAt(0), desktop(u"Ask Mira about"_s, true), resting);
}

void tst_Hero::thePosterIsTheReminder()
{
    const Recorder::Clip clip = clipNamed(u"hero"_s);
    QCOMPARE(clip.poster, 5.0);
    compareAwayFromPointer(heroAt(clip.poster), pictureOf(recordedScene(u"aurora"_s, false), clip.poster, 1), resting);
}

void tst_Hero::endsWithTheDesktop()
{
    const OverlayScene scene = recordedScene(u"aurora"_s, false);
    const Arrangement card = scene.card(Recorder::canvas, Recorder::reference(), {});
    const QPointF join = card.frameOf(tag::join).value_or(QRectF()).center();
    const QPointF tip = OverlayScene::cardPosition(Recorder::canvas, card) + join + QPointF(18, 4);
    compareAwayFromPointer(heroAt(lastFrame), desktop(u"Ask Mira about the launch date before the de"_s, false),
                           tip.toPoint());
}

QTEST_MAIN(tst_Hero)
#include "tst_Hero.moc"
