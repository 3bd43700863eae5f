#include "sound/OverlayMusic.h"

#include "preferences/Preferences.h"
#include "sound/MusicControl.h"
#include "support/FakeMusicPlayers.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_OverlayMusic : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void pausesNothingUnlessAsked();
    void pausesSpotifyToo();
    void skipsTheSpotifyThatIsToPlay();
    void playsTheChosenItemAndPausesItOnce();
    void playsNothingWithoutAUsableLink_data();
    void playsNothingWithoutAUsableLink();
    void playsNothingWithoutSpotify();
    void leavesAloneWhatItDidNotStart();

private:
    test::FakeMusicPlayers players;
    MusicControl control{players};
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<OverlayMusic> music;
};

void tst_OverlayMusic::init()
{
    players.asked.clear();
    players.installed = true;
    preferences = std::make_unique<Preferences>();
    music = std::make_unique<OverlayMusic>(*preferences, control);
}

void tst_OverlayMusic::pausesNothingUnlessAsked()
{
    music->pauseForOverlay();
    QVERIFY(players.asked.isEmpty());
}

void tst_OverlayMusic::pausesSpotifyToo()
{
    preferences->set(preference::pauseMusic, true);
    music->pauseForOverlay();
    QCOMPARE(players.asked, (QStringList{u"pause Spotify"_s, u"pause others"_s}));
}

void tst_OverlayMusic::skipsTheSpotifyThatIsToPlay()
{
    preferences->set(preference::pauseMusic, true);
    preferences->set(preference::sound, u"spotify"_s);
    music->pauseForOverlay();
    QCOMPARE(players.asked, QStringList{u"pause others"_s});
}

void tst_OverlayMusic::playsTheChosenItemAndPausesItOnce()
{
    preferences->set(preference::spotifyLink, u" https://open.spotify.com/intl-de/track/ID?si=abc\n"_s);
    QVERIFY(music->playSpotify());
    QCOMPARE(players.asked, QStringList{u"play spotify:track:ID"_s});
    music->stop();
    music->stop();
    QCOMPARE(players.asked, (QStringList{u"play spotify:track:ID"_s, u"pause Spotify"_s}));
}

void tst_OverlayMusic::playsNothingWithoutAUsableLink_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("none") << QString();
    QTest::newRow("other host") << u"https://example.com/track/ID"_s;
    QTest::newRow("no item") << u"spotify:user:me"_s;
}

void tst_OverlayMusic::playsNothingWithoutAUsableLink()
{
    QFETCH(QString, link);
    preferences->set(preference::spotifyLink, link);
    QVERIFY(!music->playSpotify());
    music->stop();
    QVERIFY(players.asked.isEmpty());
}

void tst_OverlayMusic::playsNothingWithoutSpotify()
{
    preferences->set(preference::spotifyLink, u"spotify:track:ID"_s);
    players.installed = false;
    QVERIFY(!music->playSpotify());
    music->stop();
    QVERIFY(players.asked.isEmpty());
}

void tst_OverlayMusic::leavesAloneWhatItDidNotStart()
{
    music->stop();
    QVERIFY(players.asked.isEmpty());
}

QTEST_GUILESS_MAIN(tst_OverlayMusic)
#include "tst_OverlayMusic.moc"
