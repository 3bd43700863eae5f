#include "capture/ClipFile.h"
#include "capture/ClipFrames.h"
#include "capture/DesktopScene.h"
#include "overlay/CardTags.h"
#include "themes/KelpClock.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Compares frames of the clips with overlays that the recorder had no part in.
class tst_ThemeClips : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void showsItsOverlay_data();
    void showsItsOverlay();
    void countsDownFrom52Seconds_data();
    void countsDownFrom52Seconds();
    void blursTheMockDesktop();
};

namespace {

constexpr double most = 0.5; ///< mean difference of a channel

QImage ownPicture()
{
    QImage picture(Recorder::canvas, QImage::Format_RGB32);
    picture.fill(QColor(40, 120, 210));
    return picture;
}

void addClips()
{
    QTest::addColumn<QString>("clip");
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("ring");
    for (const OverlayTheme &theme : OverlayTheme::all())
        QTest::newRow(qPrintable(theme.id)) << theme.id << theme.id << false;
    QTest::newRow("ring") << u"ring"_s << u"space"_s << true;
}

/// The countdown, out of a picture at one pixel a point.
QImage countdownOf(const OverlayScene &scene, const QImage &picture)
{
    const Arrangement card = scene.card(Recorder::canvas, Recorder::reference(), {});
    const QRectF frame = card.frameOf(tag::countdown).value_or(QRectF());
    return picture.copy(frame.translated(OverlayScene::cardPosition(Recorder::canvas, card)).toAlignedRect());
}

} // namespace

void tst_ThemeClips::initTestCase()
{
    // As a capture sets it before it begins.
    KelpClock::backdrop = DesktopScene().picture(Recorder::density);
}

void tst_ThemeClips::showsItsOverlay_data()
{
    addClips();
}

void tst_ThemeClips::showsItsOverlay()
{
    QFETCH(QString, clip);
    QFETCH(QString, theme);
    QFETCH(bool, ring);
    const Recorder::Clip found = clipNamed(clip, ownPicture());
    QCOMPARE(found.poster, 1.5);
    const double difference = ClipFile::meanDifference(frameOf(found.frames(), found.poster),
                                                       pictureOf(recordedScene(theme, ring, ownPicture()), 1.5));
    QVERIFY2(difference < most, QByteArray::number(difference).constData());
}

void tst_ThemeClips::countsDownFrom52Seconds_data()
{
    addClips();
}

void tst_ThemeClips::countsDownFrom52Seconds()
{
    QFETCH(QString, clip);
    QFETCH(QString, theme);
    QFETCH(bool, ring);
    const OverlayScene scene = recordedScene(theme, ring, ownPicture());
    QCOMPARE(scene.countdown(Recorder::reference()), ring ? u"0:52 until start"_s : u"Starts in 0:52"_s);
    const QImage found = countdownOf(scene, frameOf(clipNamed(clip, ownPicture()).frames(), 0, 1));
    const QImage expected = countdownOf(scene, pictureOf(scene, 0, 1));
    const double difference = ClipFile::meanDifference(found, expected);
    QVERIFY2(difference < most, QByteArray::number(difference).constData());
    // A second later another figure is there, which has to show.
    const double later = ClipFile::meanDifference(countdownOf(scene, pictureOf(scene, 1, 1)), expected);
    QVERIFY2(later > 2 * difference && later > 0.3, QByteArray::number(later).constData());
}

void tst_ThemeClips::blursTheMockDesktop()
{
    OverlayScene scene = recordedScene(u"midnight"_s, false);
    const QImage found = frameOf(clipNamed(u"midnight"_s).frames(), 1.5, 1);
    QVERIFY(ClipFile::meanDifference(found, pictureOf(scene, 1.5, 1)) < most);
    scene.background.backdrop = {};
    QVERIFY(ClipFile::meanDifference(found, pictureOf(scene, 1.5, 1)) > 4 * most);
}

QTEST_MAIN(tst_ThemeClips)
#include "tst_ThemeClips.moc"
