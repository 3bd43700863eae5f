#include "desktop/OneAccount.h"
#include "support/FakePlayer.h"
#include "support/KelpProcess.h"
#include "support/MusicBox.h"

#include <QFile>
#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int soon = 12'000; // ms: a tick comes every 5 s, and the machine may be busy
const QString itemLink = u"https://open.spotify.com/intl-de/track/4uLU6hMCjMI75M1A2tKUQC?si=abc"_s;
const QStringList played{u"OpenUri spotify:track:4uLU6hMCjMI75M1A2tKUQC"_s, u"Play"_s};

} // namespace

/// What the running application does to the user's music when a reminder appears and goes, with real players, and with
/// a stand-in for the one that may not be installed.
class tst_Music : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void pausesThePlayersThatPlay();
    void leavesTheMusicAloneUnlessAsked();
    void playsSpotifyAndPausesItOnce_data();
    void playsSpotifyAndPausesItOnce();
    void startsSpotifyWhereItDoesNotRun();

private:
    void startPlayers();
    /// Starts Kelp with a meeting that is due, and waits for its overlay.
    void remind(const QJsonObject &preferences);
    void press(const QString &key);

    PrivateDesktop desktop;
    std::unique_ptr<Sandbox> sandbox;
    std::unique_ptr<MusicBox> music;
    std::unique_ptr<KelpProcess> kelp;
};

void tst_Music::initTestCase()
{
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
}

void tst_Music::init()
{
    desktop.forget();
    desktop.writeAccount(oneAccount::email, oneAccount::refreshToken);
    sandbox = std::make_unique<Sandbox>();
    QVERIFY2(sandbox->start(oneAccount::seed(QJsonArray{oneAccount::meeting(u"m"_s, u"Meeting"_s, 50)})),
             qPrintable(sandbox->error()));
    music = std::make_unique<MusicBox>();
    QVERIFY(music->open(desktop.sessionBus().address()));
}

void tst_Music::cleanup()
{
    if (QTest::currentTestFailed() && kelp)
        qInfo().noquote() << kelp->output() << music->statuses();
    kelp.reset();
    music.reset();
    sandbox.reset();
}

void tst_Music::startPlayers()
{
    music->startVlc(MusicBox::Begins::Playing);
    music->startMpv(MusicBox::Begins::Playing);
    QTRY_COMPARE_WITH_TIMEOUT(music->statuses(), (QStringList{u"mpv Playing"_s, u"vlc Playing"_s, u"vlc Playing"_s}),
                              soon);
}

void tst_Music::remind(const QJsonObject &preferences)
{
    QJsonObject all = oneAccount::preferences();
    for (auto each = preferences.begin(); each != preferences.end(); ++each)
        all.insert(each.key(), each.value());
    desktop.writePreferences(all);
    kelp = std::make_unique<KelpProcess>(desktop);
    kelp->use(*sandbox);
    QVERIFY(kelp->start());
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows(), PrivateDesktop::monitors(), soon);
}

void tst_Music::press(const QString &key)
{
    desktop.display().run(u"xdotool"_s, {u"key"_s, key});
    QTRY_VERIFY(kelp->windows().isEmpty());
}

void tst_Music::pausesThePlayersThatPlay()
{
    startPlayers();
    music->startMpv(MusicBox::Begins::Paused);
    const QStringList before{u"mpv Paused"_s, u"mpv Playing"_s, u"vlc Playing"_s, u"vlc Playing"_s};
    QTRY_COMPARE_WITH_TIMEOUT(music->statuses(), before, soon);
    FakePlayers others(desktop.sessionBus().address());
    const FakePlayer &stopped = others.add({u"stopped"_s}, {.status = u"Stopped"_s});
    const FakePlayer &browser = others.add({u"chromium.instance42"_s});

    remind({{u"pauseMusic"_s, true}, {u"sound"_s, u"None"_s}});
    const QStringList after{u"mpv Paused"_s, u"mpv Paused"_s, u"vlc Paused"_s, u"vlc Paused"_s};
    QTRY_COMPARE(music->statuses(), after);
    press(u"Escape"_s);
    // Nothing is resumed, and nobody else was told anything or started.
    QCOMPARE(music->statuses(), after);
    QCOMPARE(stopped.told(), QStringList());
    QCOMPARE(browser.told(), QStringList());
}

void tst_Music::leavesTheMusicAloneUnlessAsked()
{
    startPlayers();
    FakePlayers others(desktop.sessionBus().address());
    const FakePlayer &spotify = others.add({u"spotify"_s});
    remind({{u"sound"_s, u"None"_s}, {u"spotifyLink"_s, itemLink}});
    press(u"Escape"_s);
    QCOMPARE(music->statuses(), (QStringList{u"mpv Playing"_s, u"vlc Playing"_s, u"vlc Playing"_s}));
    QCOMPARE(spotify.told(), QStringList());
}

void tst_Music::playsSpotifyAndPausesItOnce_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("dismissed") << u"Escape"_s;
    QTest::newRow("joined") << u"Return"_s;
}

void tst_Music::playsSpotifyAndPausesItOnce()
{
    QFETCH(QString, key);
    startPlayers();
    FakePlayers others(desktop.sessionBus().address());
    const FakePlayer &spotify = others.add({u"spotify"_s});
    remind({{u"pauseMusic"_s, true}, {u"sound"_s, u"spotify"_s}, {u"spotifyLink"_s, itemLink}});
    QTRY_COMPARE(spotify.told(), played);
    QTRY_COMPARE(music->statuses(), (QStringList{u"mpv Paused"_s, u"vlc Paused"_s, u"vlc Paused"_s}));
    QCOMPARE(spotify.told(), played);

    press(key);
    QTRY_COMPARE(spotify.told(), played + QStringList{u"Pause"_s});
    // And nothing more until Kelp ends.
    kelp->terminate();
    QCOMPARE(spotify.told(), played + QStringList{u"Pause"_s});
}

void tst_Music::startsSpotifyWhereItDoesNotRun()
{
    const QString told = desktop.folder(u"told"_s);
    const QString entry = desktop.folder(u".local/share/applications/spotify.desktop"_s);
    QFile file(entry);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(u"[Desktop Entry]\nType=Application\nName=A player\nExec=%1 spotify %2\n"_s
                   .arg(QStringLiteral(FAKE_PLAYER), told)
                   .toUtf8());
    file.close();
    const auto lines = [&] {
        QFile content(told);
        return content.open(QIODevice::ReadOnly) ? content.readAll() : QByteArray();
    };
    const QByteArray start = played.join(u'\n').toUtf8() + '\n';

    remind({{u"pauseMusic"_s, true}, {u"sound"_s, u"spotify"_s}, {u"spotifyLink"_s, itemLink}});
    QTRY_COMPARE_WITH_TIMEOUT(lines(), start, soon);
    press(u"Escape"_s);
    QTRY_COMPARE(lines(), start + "Pause\n");
    QVERIFY(QFile::remove(entry));
}

QTEST_GUILESS_MAIN(tst_Music)
#include "tst_Music.moc"
