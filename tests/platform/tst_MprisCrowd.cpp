#include "platform/linux/MprisPlayers.h"

#include "platform/MprisFixture.h"
#include "platform/linux/MprisRegistry.h"
#include "platform/linux/MprisSurvey.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>

using namespace kelp;
using namespace Qt::StringLiterals;
using test::EventLoopWatch;
using test::FakePlayer;
using test::MprisFixture;

#define VERIFY_RESPONSIVE(watch)                                                                                       \
    qInfo("the event loop was kept for %.1f ms at most", (watch).longestGap());                                        \
    QTRY_VERIFY((watch).turns() > 0);                                                                                  \
    QVERIFY2((watch).longestGap() < EventLoopWatch::noticeable, qPrintable(QString::number((watch).longestGap())))

/// Many players, and buses that hang: the event loop turns all the same.
class tst_MprisCrowd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void pausesAHundredPlayers_data();
    void pausesAHundredPlayers();
    void looksAtNoMoreNamesThanThereCanBe();
    void turnsWhileTheBusHangs();
    void turnsWhenTheBusGoes();
    void tellsScriptsWhatRuns();

private:
    std::unique_ptr<MprisFixture> desk;
};

void tst_MprisCrowd::initTestCase()
{
    QVERIFY(MprisFixture::useOwnFolders());
}

void tst_MprisCrowd::init()
{
    MprisFixture::uninstallApplications();
    desk = std::make_unique<MprisFixture>();
    QVERIFY(desk->isReady());
}

void tst_MprisCrowd::cleanup()
{
    desk.reset();
}

void tst_MprisCrowd::pausesAHundredPlayers_data()
{
    using Answers = FakePlayer::Answers;
    QTest::addColumn<FakePlayer::Answers>("answers");
    QTest::addColumn<int>("within"); // milliseconds until all that can be are paused
    QTest::newRow("at once") << Answers::AtOnce << 2000;
    QTest::newRow("late") << Answers::Late << 3500;
    QTest::newRow("never") << Answers::Never << 0;
}

void tst_MprisCrowd::pausesAHundredPlayers()
{
    QFETCH(FakePlayer::Answers, answers);
    QFETCH(int, within);
    QList<const FakePlayer *> players;
    for (int i = 0; i < 100; ++i)
        players.append(&desk->add({u"player%1"_s.arg(i)}, {.desktopEntry = u"player%1"_s.arg(i), .answers = answers}));
    const FakePlayer &usual = desk->add({u"usual"_s});
    const EventLoopWatch watch;
    QElapsedTimer timer;
    timer.start();
    desk->pauseAll();
    QTRY_COMPARE(usual.told(), QStringList{u"Pause"_s});
    QVERIFY2(timer.elapsed() < 900, qPrintable(QString::number(timer.elapsed())));
    const bool canBe = answers != FakePlayer::Answers::Never;
    for (const FakePlayer *player : std::as_const(players)) {
        if (canBe)
            QTRY_COMPARE(player->told(), QStringList{u"Pause"_s});
        else
            QTRY_COMPARE(player->asked(), 2);
    }
    if (canBe)
        QVERIFY2(timer.elapsed() < within, qPrintable(QString::number(timer.elapsed())));
    QTRY_VERIFY(desk->players->findChildren<MprisSurvey *>().isEmpty());
    VERIFY_RESPONSIVE(watch);
}

/// One peer may own any number of names.
void tst_MprisCrowd::looksAtNoMoreNamesThanThereCanBe()
{
    QStringList names;
    for (int i = 0; i < 5 * MprisSurvey::mostNames; ++i)
        names.append(u"name%1"_s.arg(i));
    const FakePlayer &player = desk->add(names);
    const EventLoopWatch watch;
    desk->pauseAll();
    QTRY_COMPARE(player.told(), QStringList{u"Pause"_s});
    QCOMPARE(player.asked(), 2);
    VERIFY_RESPONSIVE(watch);
}

void tst_MprisCrowd::turnsWhileTheBusHangs()
{
    const FakePlayer &player = desk->add({u"player"_s});
    MprisFixture::installApplication(u"spotify"_s, u"Exec=%1\n"_s.arg(MprisFixture::installProgram(u"client"_s)));
    QTRY_VERIFY(desk->players->spotifyInstalled());
    QCOMPARE(::kill(desk->bus.pid(), SIGSTOP), 0);
    {
        const EventLoopWatch watch;
        desk->players->playSpotify(u"spotify:track:ID"_s);
        const SpotifyPresence presence(desk->connection);
        QVERIFY(presence.isInstalled());
        // Twice, so that the time of what was asked for before is up for certain.
        for (int i = 0; i < 2; ++i) {
            desk->pauseAll();
            QTRY_VERIFY(desk->players->findChildren<MprisSurvey *>().isEmpty());
        }
        VERIFY_RESPONSIVE(watch);
    }
    QCOMPARE(::kill(desk->bus.pid(), SIGCONT), 0);
    desk->settle();
    // Where nobody knows what runs, nothing is started.
    QCOMPARE(MprisFixture::starts(u"client"_s), 0);
    QCOMPARE(player.told(), QStringList());
    desk->pauseAll();
    QTRY_COMPARE(player.told(), QStringList{u"Pause"_s});
}

void tst_MprisCrowd::turnsWhenTheBusGoes()
{
    desk->add({u"silent"_s}, {.answers = FakePlayer::Answers::Never});
    const EventLoopWatch watch;
    desk->pauseAll();
    desk->players->playSpotify(u"spotify:track:ID"_s);
    desk->bus.stop();
    QTRY_VERIFY(!QDBusConnection(desk->connection).isConnected());
    QTRY_VERIFY(desk->players->findChildren<MprisSurvey *>().isEmpty());
    desk->pauseAll();
    desk->clock.advance(60);
    QVERIFY(!desk->players->spotifyInstalled());
    VERIFY_RESPONSIVE(watch);
}

void tst_MprisCrowd::tellsScriptsWhatRuns()
{
    const QString spotify = u"com.spotify.client"_s;
    const QString music = u"com.apple.Music"_s;
    MprisRegistry registry(desk->connection);
    QObject context;
    QStringList running;
    const auto ask = [&] {
        running.clear();
        for (const QString &bundle : {spotify, music, u"com.example.other"_s})
            registry.ifRunning(bundle, &context, [&running, bundle] { running.append(bundle); });
        const auto surveys = context.findChildren<MprisSurvey *>();
        QCOMPARE(surveys.size(), 3);
        QTRY_VERIFY(context.findChildren<MprisSurvey *>().isEmpty());
    };
    desk->add({u"resting"_s}, {.status = u"Paused"_s});
    desk->add({u"firefox.instance1"_s});
    ask();
    QCOMPARE(running, QStringList());
    QVERIFY(!registry.isInstalled(spotify));

    desk->add({u"first"_s});
    desk->add({u"second"_s});
    ask();
    QCOMPARE(running, QStringList{music});

    desk->add({u"spotify"_s}, {.status = u"Stopped"_s});
    ask();
    running.sort();
    QCOMPARE(running, (QStringList{music, spotify}));
    QTRY_VERIFY(registry.isInstalled(spotify));
    QVERIFY(!registry.isInstalled(music));
}

QTEST_GUILESS_MAIN(tst_MprisCrowd)
#include "tst_MprisCrowd.moc"
