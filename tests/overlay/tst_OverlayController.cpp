#include "overlay/OverlayController.h"

#include "overlay/OverlayFixture.h"
#include "themes/ThemeImages.h"

#include <QSignalSpy>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// What is shown when, and for how long.
class tst_OverlayController : public QObject, OverlayFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void theWelcomeCardTimesOut();
    void theTimeOutOfTheWelcomeCardLeavesALaterOverlayUp();
    void theTimeOutOfAWelcomeCardLeavesALaterWelcomeCardUp();
    void aNewShowingReplacesTheOldAtOnce();
    void hidingFadesOutWithoutAnsweringAnyMore();
    void showsWhileTheOldOneFadesOut();
    void theCountdownRunsWithTheClock();
    void theCountdownFollowsAJumpOfTheClock();
    void anotherTimeCanBeShown();
    void theRingRunsWithTheClock();
    void theRingDrainsBetweenTheSeconds();
    void aScreenAddedLaterCountsDownToo();
    void nothingWakesUpForACardThatStandsStill();
    void tellsWhenItIsShownAndHidden();
    void withoutScreensNothingIsShownUntilOneComes();
    void eachWindowBlursWhatLiesBehindIt();
    void whatReplacesAnOverlayBlursWhatLayBehindThat();
    void doesNotWaitForAPicture();
    void aPreparedShowingHasItsPictureAtOnce();
    void whatIsPreparedInVainIsForgotten();
    void picturesOfTheScreensAreExpectedForAWhile();
    void nothingIsDecodedAnyMoreOnceHidden();
};

void tst_OverlayController::theWelcomeCardTimesOut()
{
    controller->show(welcome);
    clock->advance(7.9);
    QVERIFY(controller->isShown());
    clock->advance(0.2);
    QVERIFY(!controller->isShown());
}

void tst_OverlayController::theTimeOutOfTheWelcomeCardLeavesALaterOverlayUp()
{
    controller->show(welcome);
    clock->advance(5);
    controller->show(review);
    clock->advance(3600);
    QVERIFY(controller->isShown());
    QCOMPARE(controller->meeting(), sample::designReview());
}

void tst_OverlayController::theTimeOutOfAWelcomeCardLeavesALaterWelcomeCardUp()
{
    controller->show(welcome);
    clock->advance(5);
    controller->show(welcome);
    clock->advance(7);
    QVERIFY(controller->isShown());
    clock->advance(1);
    QVERIFY(!controller->isShown());
}

void tst_OverlayController::aNewShowingReplacesTheOldAtOnce()
{
    cover->means = ScreenCover::Fade::Picture;
    controller->show(review);
    const QPointer<QWidget> old = window();
    controller->show(reviewWithoutLink);
    QVERIFY(!old || !old->isVisible());
    QCOMPARE(cover->visible().size(), 2);
    QCOMPARE(controller->meeting(), sample::withoutLink(sample::designReview()));
    QTRY_VERIFY(!old);
}

void tst_OverlayController::hidingFadesOutWithoutAnsweringAnyMore()
{
    cover->means = ScreenCover::Fade::Picture;
    QSignalSpy snoozed(controller.get(), &OverlayController::snoozed);
    controller->show(review);
    const QPointer<QWidget> old = window();
    QAbstractButton *snooze = button(u"Snooze 1 min"_s);
    controller->hide(true);
    QVERIFY(!controller->isShown());
    QVERIFY(!controller->meeting());
    QVERIFY(old && old->isVisible());
    controller->show(reviewWithoutLink); // the old buttons must not answer for the new meeting
    snooze->click();
    QCOMPARE(snoozed.size(), 0);
    QVERIFY(controller->isShown());
    QTRY_VERIFY(!old);
}

void tst_OverlayController::showsWhileTheOldOneFadesOut()
{
    cover->means = ScreenCover::Fade::Picture;
    controller->show(review);
    controller->hide(true);
    controller->show(reviewWithoutLink);
    QCOMPARE(cover->visible().size(), 4);
    QTRY_COMPARE(cover->visible().size(), 2);
    QVERIFY(controller->isShown());
}

void tst_OverlayController::theCountdownRunsWithTheClock()
{
    controller->show(review);
    QCOMPARE(texts().constFirst(), u"Starts in 1:00"_s);
    clock->advance(0.6);
    QCOMPARE(texts().constFirst(), u"Starts in 0:59"_s);
    for (int second = 58; second > 0; --second) {
        clock->advance(1);
        QCOMPARE(texts().constFirst(), u"Starts in 0:%1"_s.arg(second, 2, 10, QLatin1Char('0')));
    }
    clock->advance(1);
    QCOMPARE(texts().constFirst(), u"Starting now"_s);
    clock->advance(5);
    QCOMPARE(texts().constFirst(), u"Started 0:05 ago"_s);
}

void tst_OverlayController::theCountdownFollowsAJumpOfTheClock()
{
    controller->show(review);
    clock->jump(sample::ten + 600);
    clock->advance(1.1);
    QCOMPARE(texts().constFirst(), u"Started 10:01 ago"_s);
}

void tst_OverlayController::anotherTimeCanBeShown()
{
    KelpClock::override = sample::ten - 120;
    controller->show(review);
    QCOMPARE(texts().constFirst(), u"Starts in 2:00"_s);
    clock->advance(5);
    QCOMPARE(texts().constFirst(), u"Starts in 2:00"_s);
    KelpClock::override = sample::ten + 90;
    clock->advance(1.1);
    QCOMPARE(texts().constFirst(), u"Started 1:30 ago"_s);
    KelpClock::override.reset();
    clock->advance(1.1);
    QCOMPARE(texts().constFirst(), u"Starts in 0:53"_s);
}

void tst_OverlayController::theRingRunsWithTheClock()
{
    preferences->set(preference::countdownStyle, u"ring"_s);
    controller->show(review);
    QCOMPARE(texts().constFirst(), u"1:00 until start"_s);
    clock->advance(0.6);
    QCOMPARE(texts().constFirst(), u"0:59 until start"_s);
    clock->advance(59);
    QCOMPARE(texts().constFirst(), u"0:00 until start"_s);
    clock->advance(0.5);
    QCOMPARE(texts().constFirst(), u"now starting"_s);
    clock->advance(4);
    QCOMPARE(texts().constFirst(), u"now starting"_s);
    clock->advance(1);
    QCOMPARE(texts().constFirst(), u"+0:05 since start"_s);
}

void tst_OverlayController::theRingDrainsBetweenTheSeconds()
{
    preferences->set(preference::countdownStyle, u"ring"_s);
    controller->show(review);
    clock->advance(10.1);
    const int before = clock->wakeUps();
    clock->advance(1);
    QVERIFY2(clock->wakeUps() - before >= 19 && clock->wakeUps() - before <= 21,
             qPrintable(QString::number(clock->wakeUps() - before)));
    clock->advance(49);
    const int after = clock->wakeUps();
    clock->advance(4);
    QVERIFY(clock->wakeUps() - after <= 5); // empty: nothing moves
}

void tst_OverlayController::aScreenAddedLaterCountsDownToo()
{
    setOffscreenScreens({});
    controller->show(review);
    QVERIFY(!controller->isShown());
    setOffscreenScreens({left});
    QTRY_COMPARE(cover->visible().size(), 1);
    QCOMPARE(texts().constFirst(), u"Starts in 1:00"_s);
    clock->advance(2);
    QCOMPARE(texts().constFirst(), u"Starts in 0:58"_s);
}

void tst_OverlayController::nothingWakesUpForACardThatStandsStill()
{
    controller->show(welcome);
    clock->advance(7.9);
    QCOMPARE(clock->wakeUps(), 0);
}

void tst_OverlayController::tellsWhenItIsShownAndHidden()
{
    QSignalSpy shown(controller.get(), &OverlayController::shown);
    QSignalSpy hidden(controller.get(), &OverlayController::hidden);
    controller->hide(true);
    QCOMPARE(hidden.size(), 0);
    controller->show(review);
    QCOMPARE(shown.size(), 1);
    controller->show(welcome);
    QCOMPARE(shown.size(), 2);
    QCOMPARE(hidden.size(), 1);
    controller->hide(true);
    controller->hide(false);
    QCOMPARE(hidden.size(), 2);
}

void tst_OverlayController::withoutScreensNothingIsShownUntilOneComes()
{
    setOffscreenScreens({});
    controller->show(review);
    QVERIFY(!controller->isShown());
    QCOMPARE(controller->meeting(), sample::designReview());
    setOffscreenScreens({left});
    QTRY_COMPARE(cover->visible().size(), 1);
    QCOMPARE(cover->keyboard, window());
    controller->hide(false);
    QVERIFY(!controller->meeting());
}

void tst_OverlayController::eachWindowBlursWhatLiesBehindIt()
{
    cover->behind = [](const QScreen &screen) { return screen.geometry() == left ? Qt::white : Qt::black; };
    controller->show(review);
    const QList<QWidget *> windows = cover->visible();
    QCOMPARE(windows.size(), 2);
    const auto corner = [](QWidget *window) { return window->grab(QRect(0, 0, 1, 1)).toImage().pixelColor(0, 0); };
    QVERIFY(std::abs(corner(windows.at(0)).green() - 255 * 0.45) <= 2);
    QCOMPARE(corner(windows.at(1)), QColor(Qt::black));
}

void tst_OverlayController::whatReplacesAnOverlayBlursWhatLayBehindThat()
{
    const auto corner = [](QWidget *window) { return window->grab(QRect(0, 0, 1, 1)).toImage().pixelColor(0, 0); };
    const auto corners = [&] {
        QList<int> greens;
        for (QWidget *window : cover->visible())
            greens.append(corner(window).green());
        return greens;
    };
    const auto end = [&] {
        controller->hide(false);
        QTRY_VERIFY(cover->windows.last().isNull());
    };
    controller->show(review);
    const QList<int> plain = corners();
    end();
    cover->behind = [](const QScreen &) { return Qt::white; };
    controller->show(review);
    const QList<int> before = corners();
    QCOMPARE(before.size(), 2);
    QVERIFY(before != plain);
    // The screens show windows of ours now, and go on to do so for a moment after these are gone.
    cover->behind = [](const QScreen &) { return Qt::red; };
    controller->show(review);
    QCOMPARE(corners(), before);
    // Nobody knows what lay behind a theme that hides it: then it is the plain gradient.
    end();
    controller->show(review, OverlayTheme::named(u"paper"_s));
    controller->show(review);
    QCOMPARE(corners(), plain);
    end();
    controller->show(review);
    QCOMPARE(corner(cover->visible().at(0)).green(), 0); // red
    QVERIFY(corner(cover->visible().at(0)).red() > 100);
}

void tst_OverlayController::doesNotWaitForAPicture()
{
    ThemeImages::forgetDecoded();
    preferences->set(preference::theme, u"zen"_s);
    controller->show(review);
    QWidget *window = cover->visible().at(0);
    const auto colour = [&] { return window->grab(QRect(640, 80, 1, 1)).toImage().pixelColor(0, 0); };
    const QColor before = colour();
    QTRY_VERIFY(ThemeImages::isReady(OverlayTheme::named(u"zen"_s), *preferences));
    QTRY_VERIFY(colour().lightness() > before.lightness() + 20); // the sky; fog over black before
}

void tst_OverlayController::aPreparedShowingHasItsPictureAtOnce()
{
    ThemeImages::forgetDecoded();
    preferences->set(preference::theme, u"zen"_s);
    const OverlayTheme zen = OverlayTheme::named(u"zen"_s);
    controller->prepare(review);
    QVERIFY(!controller->isShown());
    QTRY_VERIFY(ThemeImages::isReady(zen, *preferences));
    clock->advance(12);
    controller->show(review);
    const QImage first = cover->visible().at(0)->grab(QRect(640, 80, 1, 1)).toImage();
    QCoreApplication::processEvents();
    QCOMPARE(cover->visible().at(0)->grab(QRect(640, 80, 1, 1)).toImage(), first);
    const QColor colour = first.pixelColor(0, 0);
    QVERIFY2(colour.lightness() > 30, qPrintable(colour.name()));
}

void tst_OverlayController::whatIsPreparedInVainIsForgotten()
{
    ThemeImages::forgetDecoded();
    preferences->set(preference::theme, u"space"_s);
    const OverlayTheme space = OverlayTheme::named(u"space"_s);
    controller->prepare(review);
    QTRY_VERIFY(ThemeImages::isReady(space, *preferences));
    clock->advance(29);
    controller->prepare(review); // asked for again and again meanwhile
    QVERIFY(ThemeImages::isReady(space, *preferences));
    clock->advance(2);
    QVERIFY(!ThemeImages::isReady(space, *preferences));
    // A showing keeps its picture for as long as it lasts.
    controller->prepare(review);
    QTRY_VERIFY(ThemeImages::isReady(space, *preferences));
    controller->show(review);
    clock->advance(31);
    QVERIFY(ThemeImages::isReady(space, *preferences));
    controller->hide(false);
    QVERIFY(!ThemeImages::isReady(space, *preferences));
}

void tst_OverlayController::picturesOfTheScreensAreExpectedForAWhile()
{
    controller->prepare(review);
    QVERIFY(cover->expectsPictures);
    controller->show(review); // it has taken what it needs
    QVERIFY(!cover->expectsPictures);
    controller->hide(false);
    controller->prepare(review);
    clock->advance(29);
    QVERIFY(cover->expectsPictures);
    clock->advance(2);
    QVERIFY(!cover->expectsPictures);
}

void tst_OverlayController::nothingIsDecodedAnyMoreOnceHidden()
{
    const OverlayTheme lofi = OverlayTheme::named(u"lofi"_s);
    preferences->set(preference::theme, lofi.id);
    cover->means = ScreenCover::Fade::WindowOpacity;
    controller->prepare(review);
    QTRY_VERIFY(ThemeImages::isReady(lofi, *preferences));
    controller->show(review);
    QVERIFY(!cover->visible().at(0)->grab().isNull());
    controller->hide(true);
    QVERIFY(!cover->visible().isEmpty()); // fading out, with new frames
    clock->advance(0.1);
    QVERIFY(!cover->visible().at(0)->grab().isNull());
    QVERIFY(!ThemeImages::isReady(lofi, *preferences));
    QTRY_VERIFY(cover->visible().isEmpty());
}

QTEST_MAIN(tst_OverlayController)
#include "tst_OverlayController.moc"
