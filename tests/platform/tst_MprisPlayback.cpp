#include "platform/linux/MprisPlayback.h"

#include "platform/MprisFixture.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;
using test::FakePlayer;
using test::MprisFixture;

namespace {

const QString uri = u"spotify:track:ID"_s;
const QStringList played{u"OpenUri spotify:track:ID"_s, u"Play"_s};

} // namespace

/// Playing an item in a Spotify that runs, or has to be started first.
class tst_MprisPlayback : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void playsInTheOneThatRuns_data();
    void playsInTheOneThatRuns();
    void playsEvenWhereOpeningIsNotAnswered();
    void startsItAndPlaysWhenItHasComeUp();
    void playsInTheOneThatAppearsMeanwhile();
    void letsTheBusStartIt();
    void givesUpOnOneThatDoesNotAppear();
    void pausingGivesUpTheStart_data();
    void pausingGivesUpTheStart();
    void pausingAfterPlayingPausesOnce();
    void playingAfterPausingPlays();
    void playsTheLastOfTwo();

private:
    void installSpotify();

    std::unique_ptr<MprisFixture> desk;
};

void tst_MprisPlayback::initTestCase()
{
    QVERIFY(MprisFixture::useOwnFolders());
}

void tst_MprisPlayback::init()
{
    MprisFixture::uninstallApplications();
    desk = std::make_unique<MprisFixture>();
    QVERIFY(desk->isReady());
}

void tst_MprisPlayback::cleanup()
{
    desk.reset();
}

void tst_MprisPlayback::installSpotify()
{
    MprisFixture::installApplication(u"spotify"_s, u"Exec=%1 %U\n"_s.arg(MprisFixture::installProgram(u"client"_s)));
    QTRY_VERIFY(desk->players->spotifyInstalled());
}

void tst_MprisPlayback::playsInTheOneThatRuns_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QVariant>("entry");
    QTest::newRow("name") << QStringList{u"spotify"_s} << QVariant();
    QTest::newRow("instance") << QStringList{u"spotify.instance1"_s} << QVariant();
    QTest::newRow("entry") << QStringList{u"x"_s} << QVariant(u"spotify"_s);
}

void tst_MprisPlayback::playsInTheOneThatRuns()
{
    QFETCH(QStringList, names);
    QFETCH(QVariant, entry);
    installSpotify();
    const FakePlayer &other = desk->add({u"other"_s}, {.desktopEntry = u"other"_s});
    const FakePlayer &silent = desk->add({u"a-silent"_s}, {.answers = FakePlayer::Answers::Never});
    const FakePlayer &spotify = desk->add(names, {.status = u"Stopped"_s, .desktopEntry = entry});
    desk->players->playSpotify(uri);
    QTRY_COMPARE_WITH_TIMEOUT(spotify.told(), played, 1500);
    QTRY_COMPARE(silent.asked(), 2);
    desk->settle();
    QCOMPARE(other.told(), QStringList());
    QCOMPARE(silent.told(), QStringList());
    QCOMPARE(MprisFixture::starts(u"client"_s), 0);
}

void tst_MprisPlayback::playsEvenWhereOpeningIsNotAnswered()
{
    const FakePlayer &spotify = desk->add({u"spotify"_s}, {.answers = FakePlayer::Answers::Never});
    desk->players->playSpotify(uri);
    QTRY_COMPARE(spotify.told(), played);
}

void tst_MprisPlayback::startsItAndPlaysWhenItHasComeUp()
{
    installSpotify();
    desk->players->playSpotify(uri);
    QTRY_COMPARE(MprisFixture::starts(u"client"_s), 1);
    const FakePlayer &spotify = desk->add({u"spotify.instance5"_s});
    const FakePlayer &other = desk->add({u"other"_s});
    desk->settle();
    desk->clock.advance(1.9);
    desk->settle();
    QCOMPARE(spotify.told(), QStringList());
    desk->clock.advance(0.2);
    QTRY_COMPARE(spotify.told(), played);
    desk->clock.advance(60);
    desk->settle();
    QCOMPARE(spotify.told(), played);
    QCOMPARE(other.told(), QStringList());
    QCOMPARE(MprisFixture::starts(u"client"_s), 1);
}

/// Somebody else starts it while a player that hangs keeps Kelp looking.
void tst_MprisPlayback::playsInTheOneThatAppearsMeanwhile()
{
    installSpotify();
    const FakePlayer &silent = desk->add({u"silent"_s}, {.answers = FakePlayer::Answers::Never});
    desk->players->playSpotify(uri);
    QTRY_VERIFY(silent.asked() > 0);
    const FakePlayer &spotify = desk->add({u"spotify"_s});
    QTRY_VERIFY((desk->clock.advance(MprisPlayback::settling + 0.1), !spotify.told().isEmpty()));
    QTRY_COMPARE(spotify.told(), played);
    desk->settle();
    QCOMPARE(MprisFixture::starts(u"client"_s), 0);
}

void tst_MprisPlayback::letsTheBusStartIt()
{
    desk.reset();
    MprisFixture::installService(u"org.mpris.MediaPlayer2.spotify"_s, MprisFixture::installProgram(u"service"_s));
    desk = std::make_unique<MprisFixture>();
    QTRY_VERIFY(desk->players->spotifyInstalled());
    desk->players->playSpotify(uri);
    QTRY_COMPARE(MprisFixture::starts(u"service"_s), 1);
    const FakePlayer &spotify = desk->add({u"spotify"_s});
    QTRY_VERIFY((desk->clock.advance(2.1), !spotify.told().isEmpty()));
    QTRY_COMPARE(spotify.told(), played);
}

void tst_MprisPlayback::givesUpOnOneThatDoesNotAppear()
{
    installSpotify();
    desk->players->playSpotify(uri);
    QTRY_COMPARE(MprisFixture::starts(u"client"_s), 1);
    desk->clock.advance(MprisPlayback::startPatience + 1);
    const FakePlayer &spotify = desk->add({u"spotify"_s});
    QTRY_VERIFY(desk->players->spotifyInstalled());
    desk->settle();
    desk->clock.advance(60);
    desk->settle();
    QCOMPARE(spotify.told(), QStringList());
}

void tst_MprisPlayback::pausingGivesUpTheStart_data()
{
    QTest::addColumn<bool>("isThere");
    QTest::newRow("before it appears") << false;
    QTest::newRow("before it is asked") << true;
}

void tst_MprisPlayback::pausingGivesUpTheStart()
{
    QFETCH(bool, isThere);
    installSpotify();
    desk->players->playSpotify(uri);
    QTRY_COMPARE(MprisFixture::starts(u"client"_s), 1);
    const FakePlayer *spotify = nullptr;
    if (isThere)
        spotify = &desk->add({u"spotify"_s});
    desk->settle();
    desk->pauseSpotify();
    if (isThere) {
        QTRY_COMPARE(spotify->told(), QStringList{u"Pause"_s});
    } else {
        QTRY_VERIFY(desk->players->findChildren<QObject *>(Qt::FindDirectChildrenOnly).isEmpty());
        spotify = &desk->add({u"spotify"_s});
    }
    desk->settle();
    desk->clock.advance(60);
    desk->settle();
    QCOMPARE(spotify->told(), isThere ? QStringList{u"Pause"_s} : QStringList());
}

void tst_MprisPlayback::pausingAfterPlayingPausesOnce()
{
    const FakePlayer &spotify = desk->add({u"spotify"_s});
    desk->players->playSpotify(uri);
    QTRY_COMPARE(spotify.told(), played);
    desk->pauseSpotify();
    QTRY_COMPARE(spotify.told(), played + QStringList{u"Pause"_s});
    desk->clock.advance(60);
    desk->settle();
    QCOMPARE(spotify.told(), played + QStringList{u"Pause"_s});
}

/// A new overlay takes the old one down first: what was to be paused is to play now.
void tst_MprisPlayback::playingAfterPausingPlays()
{
    const FakePlayer &spotify = desk->add({u"spotify"_s});
    desk->players->pauseSpotify();
    desk->players->playSpotify(uri);
    desk->clock.advance(0);
    QTRY_COMPARE(spotify.told(), played);

    desk->pauseSpotify(); // is looking around already
    desk->players->playSpotify(uri);
    QTRY_COMPARE(spotify.told(), played + played);
    desk->settle();
    QCOMPARE(spotify.told(), played + played);
}

void tst_MprisPlayback::playsTheLastOfTwo()
{
    const FakePlayer &spotify = desk->add({u"spotify"_s});
    desk->players->playSpotify(u"spotify:track:FIRST"_s);
    desk->players->playSpotify(uri);
    QTRY_COMPARE(spotify.told(), played);
}

QTEST_GUILESS_MAIN(tst_MprisPlayback)
#include "tst_MprisPlayback.moc"
