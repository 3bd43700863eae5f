#include "overlay/OverlayController.h"

#include "overlay/OverlayFixture.h"
#include "support/SampleThemes.h"
#include "themes/ThemeImages.h"

#include <QGuiApplication>
#include <QImage>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Which theme the windows are shown in, and what of it lives in them.
class tst_OverlayTheme : public QObject, OverlayFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { tearDown(); }

    void aGivenThemeWinsOverThePreference();
    void allScreensShowTheSameRandomTheme();
    void twoShowingsInARowDifferInTheirRandomTheme();
    void aMovingThemeMovesUnlessMotionIsOff_data();
    void aMovingThemeMovesUnlessMotionIsOff();
    void theUsersPictureIsDimmedAsAskedFor_data();
    void theUsersPictureIsDimmedAsAskedFor();
    void withoutAPictureTheAccentFadesToBlack();

private:
    /// What a window shows at this moment, above its card.
    [[nodiscard]] QImage above(int index = 0) const { return window(index)->grab(QRect(0, 0, 1280, 160)).toImage(); }
    void chooseWhitePicture(const QTemporaryDir &folder);
};

namespace {

const OverlayContent review = MeetingContent{sample::designReview(), {}};

} // namespace

void tst_OverlayTheme::init()
{
    setUp();
    ThemeImages::forgetDecoded();
    controller->setMotion(false);
}

void tst_OverlayTheme::aGivenThemeWinsOverThePreference()
{
    preferences->set(preference::theme, u"paper"_s);
    const auto corner = [&] { return above().pixelColor(0, 0); };
    controller->show(review);
    QVERIFY(corner().lightness() > 200);
    controller->show(review, sample::terminal());
    QVERIFY(corner().lightness() < 20);
    controller->show(review);
    QVERIFY(corner().lightness() > 200);
}

void tst_OverlayTheme::allScreensShowTheSameRandomTheme()
{
    const QRect third = left.translated(2560, 0);
    setOffscreenScreens({left, left.translated(1280, 0), third});
    QTRY_VERIFY(QGuiApplication::screens().size() == 3 && QGuiApplication::screens().at(1)->size() == left.size());
    preferences->set(preference::theme, u"random"_s);
    for (int round = 0; round < 6; ++round) {
        controller->show(review);
        const QImage first = window(0)->grab().toImage();
        QCOMPARE(window(1)->grab().toImage(), first);
        QCOMPARE(window(2)->grab().toImage(), first);
    }
}

void tst_OverlayTheme::twoShowingsInARowDifferInTheirRandomTheme()
{
    preferences->set(preference::theme, u"random"_s);
    QImage last;
    for (int round = 0; round < 12; ++round) {
        controller->show(review);
        const QImage shown = window()->grab().toImage();
        QVERIFY(shown != last);
        last = shown;
    }
}

void tst_OverlayTheme::aMovingThemeMovesUnlessMotionIsOff_data()
{
    QTest::addColumn<bool>("motion");
    QTest::newRow("moves") << true;
    QTest::newRow("stands still") << false;
}

void tst_OverlayTheme::aMovingThemeMovesUnlessMotionIsOff()
{
    QFETCH(bool, motion);
    preferences->set(preference::theme, u"aurora"_s);
    controller->setMotion(motion);
    controller->show(review);
    for (int index = 0; index < 2; ++index) {
        QImage before = above(index);
        for (int second = 0; second < 3; ++second) {
            clock->advance(1);
            const QImage now = above(index);
            QCOMPARE(now != before, motion);
            before = now;
        }
    }
}

void tst_OverlayTheme::chooseWhitePicture(const QTemporaryDir &folder)
{
    QImage white(64, 40, QImage::Format_RGB32);
    white.fill(Qt::white);
    const QString path = folder.filePath(u"white.png"_s);
    QVERIFY(white.save(path));
    preferences->set(preference::theme, u"custom"_s);
    preferences->set(preference::customImagePath, path);
}

void tst_OverlayTheme::theUsersPictureIsDimmedAsAskedFor_data()
{
    QTest::addColumn<double>("dim");
    QTest::addColumn<int>("level");
    QTest::newRow("strongly") << 0.8 << 51;
    QTest::newRow("not at all") << 0.0 << 255;
    QTest::newRow("more than there is") << 7.0 << 0;
    QTest::newRow("less than there is") << -1.0 << 255;
}

void tst_OverlayTheme::theUsersPictureIsDimmedAsAskedFor()
{
    QFETCH(double, dim);
    QFETCH(int, level);
    const QTemporaryDir folder;
    chooseWhitePicture(folder);
    preferences->set(preference::customDim, dim);
    controller->show(review);
    QTRY_VERIFY(ThemeImages::isReady(OverlayTheme::named(u"custom"_s), *preferences));
    // Between the vignette and the card.
    const auto shown = [&] { return above().pixelColor(640, 155).green(); };
    QTRY_VERIFY2(std::abs(shown() - level) <= 1, qPrintable(QString::number(shown())));
    // Decoded by now, it is there at once.
    controller->show(review, OverlayTheme::named(u"custom"_s));
    QVERIFY2(std::abs(shown() - level) <= 1, qPrintable(QString::number(shown())));
}

void tst_OverlayTheme::withoutAPictureTheAccentFadesToBlack()
{
    preferences->set(preference::theme, u"custom"_s);
    controller->show(review);
    const QImage shown = window()->grab().toImage();
    for (const int y : {2, 100, 400, 700}) {
        const double expected = 255 * 0.35 * (1 - (y + 0.5) / 720); // the theme's accent is white
        QVERIFY(std::abs(shown.pixelColor(5, y).green() - expected) <= 1.5);
    }
}

QTEST_MAIN(tst_OverlayTheme)
#include "tst_OverlayTheme.moc"
