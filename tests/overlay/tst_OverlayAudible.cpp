#include "overlay/OverlayController.h"

#include "overlay/OverlayFixture.h"

#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// When a reminder is heard, and when it falls silent.
class tst_OverlayAudible : public QObject, OverlayFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void aMeetingIsHeardOnceItIsSeen();
    void aMeetingIsHeardThoughNothingIsPainted();
    void aMeetingIsHeardWithoutScreens();
    void aMeetingThatIsGoneBeforeItIsSeenIsNotHeard();
    void theWelcomeCardIsSilent();
    void hidingStopsTheSound_data();
    void hidingStopsTheSound();
    void aNewShowingStopsWhatPlays();
};

void tst_OverlayAudible::aMeetingIsHeardOnceItIsSeen()
{
    controller->show(review);
    QCOMPARE(sounds->player.plays.size(), 0);
    for (QWidget *each : cover->visible())
        QTRY_VERIFY(qobject_cast<OverlayView *>(each)->isSeen());
    QCOMPARE(sounds->player.plays.size(), 0); // what is painted is on its way to the screen
    clock->advance(0);
    QCOMPARE(sounds->player.plays.size(), 1);
    QCOMPARE(sounds->player.plays.first().sound.name, u"Glass"_s);
    clock->advance(10);
    QCOMPARE(sounds->player.plays.size(), 1);
}

void tst_OverlayAudible::aMeetingIsHeardThoughNothingIsPainted()
{
    controller->show(review);
    clock->advance(0.24);
    QCOMPARE(sounds->player.plays.size(), 0);
    clock->advance(0.01);
    QCOMPARE(sounds->player.plays.size(), 1);
}

void tst_OverlayAudible::aMeetingIsHeardWithoutScreens()
{
    setOffscreenScreens({});
    controller->show(review);
    clock->advance(0);
    QCOMPARE(sounds->player.plays.size(), 1);
    QVERIFY(sounds->player.isPlaying);
    controller->hide(true);
    QVERIFY(!sounds->player.isPlaying);
}

void tst_OverlayAudible::aMeetingThatIsGoneBeforeItIsSeenIsNotHeard()
{
    controller->show(review);
    controller->hide(true);
    clock->advance(10);
    QCOMPARE(sounds->player.plays.size(), 0);
}

void tst_OverlayAudible::theWelcomeCardIsSilent()
{
    preferences->set(preference::pauseMusic, true);
    controller->show(welcome);
    clock->advance(5);
    QCOMPARE(sounds->player.plays.size(), 0);
    QCOMPARE(sounds->players.asked, QStringList());
}

void tst_OverlayAudible::hidingStopsTheSound_data()
{
    QTest::addColumn<QString>("answer");
    for (const QString &each : {u"Join Google Meet"_s, u"Snooze 1 min"_s, u"Dismiss"_s, u"Return"_s, u"Escape"_s})
        QTest::newRow(qPrintable(each)) << each;
}

void tst_OverlayAudible::hidingStopsTheSound()
{
    QFETCH(QString, answer);
    for (const bool isSong : {false, true}) {
        preferences->set(preference::sound, isSong ? u"spotify"_s : u"Glass"_s);
        preferences->set(preference::spotifyLink, u"https://open.spotify.com/track/abc"_s);
        sounds->players.installed = true;
        controller->show(review);
        clock->advance(1);
        QCOMPARE(sounds->player.isPlaying, !isSong);
        QCOMPARE(sounds->players.asked.size(), isSong ? 1 : 0);
        if (QAbstractButton *pressed = button(answer))
            pressed->click();
        else
            press(window(), answer == u"Return" ? Qt::Key_Return : Qt::Key_Escape);
        QVERIFY(!controller->isShown());
        QVERIFY(!sounds->player.isPlaying);
        QCOMPARE(sounds->players.asked.mid(1), isSong ? QStringList{u"pause Spotify"_s} : QStringList());
    }
}

void tst_OverlayAudible::aNewShowingStopsWhatPlays()
{
    sounds->sounds().play(u"Bells"_s);
    controller->show(welcome);
    QVERIFY(!sounds->player.isPlaying);
}

QTEST_MAIN(tst_OverlayAudible)
#include "tst_OverlayAudible.moc"
