#include "platform/linux/MprisPlayers.h"

#include "platform/MprisFixture.h"
#include "platform/linux/MprisSurvey.h"

#include <QDBusVariant>
#include <QTest>
#include <QThreadPool>

using namespace kelp;
using namespace Qt::StringLiterals;
using test::FakePlayer;
using test::MprisFixture;

namespace {

const QStringList paused{u"Pause"_s};
const QStringList untouched;

} // namespace

/// Pausing, on a bus with all kinds of players.
class tst_MprisPlayers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void pausesTheOthersThatPlay();
    void asksAPlayerOfSeveralNamesOnce();
    void leavesBrowsersAlone_data();
    void leavesBrowsersAlone();
    void knowsSpotify_data();
    void knowsSpotify();
    void pausesAllOnce();
    void startsNobodyToPauseThem();
    void outlivesHostileAnswers_data();
    void outlivesHostileAnswers();
    void waitsForNobodyWhoIsSilent();
    void leavesAloneWhoAnswersTooLate();
    void outlivesPlayersThatLeave();
    void doesNothingWithoutABus();
    void tellsWhetherSpotifyIsInstalled_data();
    void tellsWhetherSpotifyIsInstalled();
    void noticesASpotifyThatRunsOnly();

private:
    /// Waits until the look around that a pause began is over, and the players have got what came of it.
    [[nodiscard]] bool isSurveying() const;
    void waitForSurvey();

    std::unique_ptr<MprisFixture> desk;
};

void tst_MprisPlayers::initTestCase()
{
    QVERIFY(MprisFixture::useOwnFolders());
}

void tst_MprisPlayers::init()
{
    MprisFixture::uninstallApplications();
    desk = std::make_unique<MprisFixture>();
    QVERIFY(desk->isReady());
}

void tst_MprisPlayers::cleanup()
{
    desk.reset();
}

bool tst_MprisPlayers::isSurveying() const
{
    return !desk->players->findChildren<MprisSurvey *>().isEmpty();
}

void tst_MprisPlayers::waitForSurvey()
{
    QTRY_VERIFY(!isSurveying());
    desk->settle();
}

void tst_MprisPlayers::pausesTheOthersThatPlay()
{
    const FakePlayer &first = desk->add({u"first"_s});
    const FakePlayer &second = desk->add({u"second.instance7"_s}, {.desktopEntry = u"second"_s});
    const FakePlayer &resting = desk->add({u"resting"_s}, {.status = u"Paused"_s});
    const FakePlayer &stopped = desk->add({u"stopped"_s}, {.status = u"Stopped"_s});
    const FakePlayer &spotify = desk->add({u"spotify"_s});
    desk->pauseOthers();
    QTRY_COMPARE(first.told(), paused);
    QTRY_COMPARE(second.told(), paused);
    waitForSurvey();
    for (const FakePlayer *player : {&resting, &stopped, &spotify})
        QCOMPARE(player->told(), untouched);
    QCOMPARE(spotify.asked(), 0);
}

void tst_MprisPlayers::asksAPlayerOfSeveralNamesOnce()
{
    const FakePlayer &player = desk->add({u"vlc"_s, u"vlc.instance42"_s, u"other"_s});
    desk->pauseAll();
    waitForSurvey();
    QTRY_COMPARE(player.told(), paused);
    QCOMPARE(player.asked(), 2);
}

void tst_MprisPlayers::leavesBrowsersAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("entry");
    QTest::addColumn<bool>("isBrowser");
    QTest::newRow("by its entry") << u"x"_s << QVariant(u"my-browser"_s) << true;
    QTest::newRow("by its name's entry") << u"my-browser.instance3"_s << QVariant() << true;
    QTest::newRow("integrated in the desktop") << u"plasma-browser-integration"_s << QVariant(u"my-browser"_s) << true;
    QTest::newRow("known, not installed here") << u"firefox.instance_1_23"_s << QVariant(u"org.x.fox"_s) << true;
    QTest::newRow("known, in capitals") << u"Chromium.instance99"_s << QVariant() << true;
    QTest::newRow("player") << u"my-player"_s << QVariant(u"my-player"_s) << false;
    QTest::newRow("player that is called as one") << u"my-browser-player"_s << QVariant() << false;
    QTest::newRow("not installed") << u"x"_s << QVariant(u"y"_s) << false;
    QTest::newRow("a path") << u"x"_s << QVariant(u"../applications/my-browser"_s) << false;
}

void tst_MprisPlayers::leavesBrowsersAlone()
{
    QFETCH(QString, name);
    QFETCH(QVariant, entry);
    QFETCH(bool, isBrowser);
    MprisFixture::installApplication(u"my-browser"_s, u"Exec=true\nCategories=Network;WebBrowser;\n"_s);
    MprisFixture::installApplication(u"my-player"_s, u"Exec=true\nCategories=AudioVideo;Player;\n"_s);
    const FakePlayer &player = desk->add({name}, {.desktopEntry = entry});
    desk->pauseOthers();
    waitForSurvey();
    QTRY_COMPARE(player.asked(), 2);
    QCOMPARE(player.told(), isBrowser ? untouched : paused);
}

void tst_MprisPlayers::knowsSpotify_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QVariant>("entry");
    QTest::addColumn<bool>("isSpotify");
    QTest::newRow("name") << QStringList{u"spotify"_s} << QVariant() << true;
    QTest::newRow("instance") << QStringList{u"spotify.instance12"_s} << QVariant() << true;
    QTest::newRow("one name of two") << QStringList{u"a"_s, u"spotify"_s} << QVariant() << true;
    QTest::newRow("entry") << QStringList{u"x"_s} << QVariant(u"spotify"_s) << true;
    QTest::newRow("entry of the snap") << QStringList{u"x"_s} << QVariant(u"spotify_spotify"_s) << true;
    QTest::newRow("entry of the flatpak") << QStringList{u"x"_s} << QVariant(u"com.spotify.Client"_s) << true;
    QTest::newRow("like it") << QStringList{u"spotifyd"_s} << QVariant(u"spotify-qt"_s) << false;
    QTest::newRow("other") << QStringList{u"vlc"_s} << QVariant(u"vlc"_s) << false;
}

void tst_MprisPlayers::knowsSpotify()
{
    QFETCH(QStringList, names);
    QFETCH(QVariant, entry);
    QFETCH(bool, isSpotify);
    // It says so even where it is between two tracks.
    const FakePlayer &player = desk->add(names, {.status = u"Paused"_s, .desktopEntry = entry});
    desk->pauseSpotify();
    waitForSurvey();
    QCOMPARE(player.told(), isSpotify ? paused : untouched);
}

void tst_MprisPlayers::pausesAllOnce()
{
    const FakePlayer &spotify = desk->add({u"spotify"_s});
    const FakePlayer &other = desk->add({u"other"_s});
    desk->pauseAll();
    QCOMPARE(desk->players->findChildren<MprisSurvey *>().size(), 1);
    waitForSurvey();
    QTRY_COMPARE(spotify.told(), paused);
    QTRY_COMPARE(other.told(), paused);
}

void tst_MprisPlayers::startsNobodyToPauseThem()
{
    desk.reset();
    for (const QString &name : {u"lazy"_s, u"spotify"_s})
        MprisFixture::installService(u"org.mpris.MediaPlayer2."_s + name, MprisFixture::installProgram(name));
    desk = std::make_unique<MprisFixture>();
    desk->pauseAll();
    waitForSurvey();
    QCOMPARE(MprisFixture::starts(u"lazy"_s), 0);
    QCOMPARE(MprisFixture::starts(u"spotify"_s), 0);
}

void tst_MprisPlayers::outlivesHostileAnswers_data()
{
    using Answers = FakePlayer::Answers;
    QTest::addColumn<FakePlayer::Character>("character");
    QTest::addColumn<bool>("isPaused");
    const auto row = [](const char *name, const FakePlayer::Character &character, bool isPaused) {
        QTest::newRow(name) << character << isPaused;
    };
    const QString huge(8 * 1024 * 1024, u'x');
    row("errors", {.answers = Answers::WithErrors}, false);
    row("nothing", {.answers = Answers::WithNothing}, false);
    row("more than asked for", {.answers = Answers::WithMuch}, true);
    row("a number", {.status = 1}, false);
    row("a list", {.status = QStringList{u"Playing"_s}}, false);
    row("a variant in a variant", {.status = QVariant::fromValue(QDBusVariant(u"Playing"_s))}, false);
    row("bytes", {.status = QByteArray("Playing")}, false);
    row("another case", {.status = u"PLAYING"_s}, false);
    row("a huge status", {.status = huge}, false);
    row("a huge entry", {.desktopEntry = huge}, true);
    row("an entry of odd characters", {.desktopEntry = u"../../etc/passwd\n%s%n\u202e\u0001"_s}, true);
    row("an entry that is none", {.desktopEntry = QVariantList{1, 2}}, true);
    row("an empty entry", {.desktopEntry = u""_s}, true);
}

void tst_MprisPlayers::outlivesHostileAnswers()
{
    QFETCH(FakePlayer::Character, character);
    QFETCH(bool, isPaused);
    const FakePlayer &hostile = desk->add({u"hostile"_s}, character);
    const FakePlayer &usual = desk->add({u"usual"_s});
    const test::EventLoopWatch watch;
    desk->pauseAll();
    QTRY_COMPARE(usual.told(), paused);
    QTRY_VERIFY(!isSurveying());
    QVERIFY2(watch.longestGap() < watch.noticeable, qPrintable(QString::number(watch.longestGap())));
    waitForSurvey(); // which itself waits for the bus
    QCOMPARE(hostile.told(), isPaused ? paused : untouched);
}

void tst_MprisPlayers::waitsForNobodyWhoIsSilent()
{
    const FakePlayer &silent = desk->add({u"a-silent"_s}, {.answers = FakePlayer::Answers::Never});
    const FakePlayer &slow = desk->add({u"b-slow"_s}, {.answers = FakePlayer::Answers::Late, .delay = 1000});
    const FakePlayer &usual = desk->add({u"c-usual"_s});
    const test::EventLoopWatch watch;
    QElapsedTimer timer;
    timer.start();
    desk->pauseOthers();
    QTRY_COMPARE(usual.told(), paused);
    QVERIFY2(timer.elapsed() < 900, qPrintable(QString::number(timer.elapsed())));
    QTRY_COMPARE(slow.told(), paused);
    QTRY_VERIFY(!isSurveying());
    QVERIFY2(watch.longestGap() < watch.noticeable, qPrintable(QString::number(watch.longestGap())));
    waitForSurvey(); // which itself waits for the bus
    QVERIFY2(timer.elapsed() < 3500, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(silent.asked(), 2);
    QCOMPARE(silent.told(), untouched);
}

void tst_MprisPlayers::leavesAloneWhoAnswersTooLate()
{
    const FakePlayer &late = desk->add({u"late"_s}, {.answers = FakePlayer::Answers::Late, .delay = 2500});
    desk->pauseOthers();
    waitForSurvey();
    QCOMPARE(late.told(), untouched);
}

void tst_MprisPlayers::outlivesPlayersThatLeave()
{
    const FakePlayer &usual = desk->add({u"usual"_s});
    for (int round = 0; round < 20; ++round) {
        FakePlayer &brief = desk->add({u"brief%1"_s.arg(round)}, {.answers = FakePlayer::Answers::Never});
        desk->pauseOthers();
        if (round % 2 == 0)
            QTRY_VERIFY(brief.asked() > 0);
        desk->fakes->remove(brief);
    }
    QTRY_COMPARE(usual.told().size(), 20);
    // Whoever has left is not waited for.
    QTRY_VERIFY_WITH_TIMEOUT(desk->players->findChildren<MprisSurvey *>().isEmpty(), 1500);
}

void tst_MprisPlayers::doesNothingWithoutABus()
{
    MprisFixture::installApplication(u"spotify"_s, u"Exec=%1\n"_s.arg(MprisFixture::installProgram(u"client"_s)));
    QTRY_VERIFY(desk->players->spotifyInstalled());
    test::FakeClock clock;
    MprisPlayers players(u"no such connection"_s, clock);
    players.pauseSpotify();
    players.pauseOthers();
    players.playSpotify(u"spotify:track:ID"_s);
    clock.advance(60);
    players.pauseSpotify();
    clock.advance(60);
    // It is, but nobody could ask it to play.
    QVERIFY(!players.spotifyInstalled());
    QThreadPool::globalInstance()->waitForDone();
    QCOMPARE(MprisFixture::starts(u"client"_s), 0);
}

void tst_MprisPlayers::tellsWhetherSpotifyIsInstalled_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("lines");
    QTest::addColumn<bool>("isInstalled");
    const QString usual = u"Exec=true %U\n"_s;
    QTest::newRow("nothing") << u"other"_s << usual << false;
    QTest::newRow("usual") << u"spotify"_s << usual << true;
    QTest::newRow("snap") << u"spotify_spotify"_s << usual << true;
    QTest::newRow("flatpak") << u"com.spotify.Client"_s << usual << true;
    QTest::newRow("without its program") << u"spotify"_s << u"Exec=/no/such/program\n"_s << false;
    QTest::newRow("taken away by the user") << u"spotify"_s << usual + u"Hidden=true\n"_s << false;
}

void tst_MprisPlayers::tellsWhetherSpotifyIsInstalled()
{
    QFETCH(QString, entry);
    QFETCH(QString, lines);
    QFETCH(bool, isInstalled);
    MprisFixture::installApplication(entry, lines);
    QTRY_COMPARE(desk->players->spotifyInstalled(), isInstalled);
}

void tst_MprisPlayers::noticesASpotifyThatRunsOnly()
{
    QVERIFY(!desk->players->spotifyInstalled());
    FakePlayer &spotify = desk->add({u"spotify"_s});
    QTRY_VERIFY(desk->players->spotifyInstalled());
    desk->fakes->remove(spotify);
    QTRY_VERIFY(!desk->players->spotifyInstalled());
}

QTEST_GUILESS_MAIN(tst_MprisPlayers)
#include "tst_MprisPlayers.moc"
