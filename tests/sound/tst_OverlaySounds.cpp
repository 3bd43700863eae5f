#include "sound/OverlaySounds.h"

#include "sound/ChimeSynth.h"
#include "sound/SystemSynth.h"
#include "support/FakeClock.h"
#include "support/RecordedSounds.h"

#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray contentOf(const Sound &sound)
{
    return sound.bytes ? contentOf(sound.bytes->path()) : QByteArray();
}

QByteArray chime(int index)
{
    return ChimeSynth::wav(ChimeSynth::presets().at(index));
}

const QString songLink = u"https://open.spotify.com/track/abc"_s;

} // namespace

class tst_OverlaySounds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void offersWhatThereIs();
    void playsWhatIsChosen_data();
    void playsWhatIsChosen();
    void noneIsSilentAndStops();
    void aSecondSoundReplacesTheFirst();
    void rendersAChimeOnce();
    void aBrokenSoundOfTheDesktopGivesWayToOurOwn();
    void aNameThatNobodyKnowsIsSilent();
    void setsTheVolume_data();
    void setsTheVolume();

    void playsTheUsersOwnFile();
    void glassStandsInForTheUsersOwnFile_data();
    void glassStandsInForTheUsersOwnFile();
    void glassStandsInForSpotify_data();
    void glassStandsInForSpotify();
    void playsAndPausesSpotify();
    void anotherSoundEndsTheSong_data();
    void anotherSoundEndsTheSong();
    void aNameOfTheCacheIsNoSound();
    void pausesTheUsersMusic_data();
    void pausesTheUsersMusic();

private:
    void restart(const QJsonObject &stored);
    [[nodiscard]] FakeSoundPlayer &player() const { return recorded->player; }
    [[nodiscard]] OverlaySounds &sounds() const { return recorded->sounds(); }

    FakeClock clock{{1761731940.9}};
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<RecordedSounds> recorded;
};

void tst_OverlaySounds::init()
{
    clock.jump({1761731940.9});
    restart({});
}

void tst_OverlaySounds::restart(const QJsonObject &stored)
{
    recorded.reset();
    preferences = std::make_unique<Preferences>(stored);
    recorded = std::make_unique<RecordedSounds>(*preferences, clock);
}

void tst_OverlaySounds::offersWhatThereIs()
{
    QCOMPARE(OverlaySounds::system(), (QStringList{u"Glass"_s, u"Hero"_s, u"Submarine"_s, u"Ping"_s, u"Purr"_s,
                                                   u"Funk"_s, u"Blow"_s, u"Pop"_s, u"Tink"_s}));
    QCOMPARE(OverlaySounds::chimes(), (QStringList{u"Chime"_s, u"Bells"_s, u"Doorbell"_s, u"Marimba"_s, u"Harp"_s,
                                                   u"Crystal"_s, u"Singing bowl"_s, u"Arcade"_s}));
}

void tst_OverlaySounds::playsWhatIsChosen_data()
{
    QTest::addColumn<QJsonValue>("sound");
    QTest::addColumn<QString>("name"); // of the desktop's sound that is tried first
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray glass = *SystemSynth::wav(u"Glass"_s);
    QTest::newRow("nothing stored") << QJsonValue(QJsonValue::Undefined) << u"Glass"_s << glass;
    QTest::newRow("no text stored") << QJsonValue(7) << u"Glass"_s << glass;
    QTest::newRow("Glass") << QJsonValue(u"Glass"_s) << u"Glass"_s << glass;
    QTest::newRow("Tink") << QJsonValue(u"Tink"_s) << u"Tink"_s << *SystemSynth::wav(u"Tink"_s);
    QTest::newRow("Chime") << QJsonValue(u"Chime"_s) << QString() << chime(0);
    QTest::newRow("Arcade") << QJsonValue(u"Arcade"_s) << QString() << chime(7);
    QTest::newRow("a name of the desktop") << QJsonValue(u"bell"_s) << u"bell"_s << QByteArray();
}

void tst_OverlaySounds::playsWhatIsChosen()
{
    QFETCH(QJsonValue, sound);
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    restart({{u"sound"_s, sound}});
    sounds().playForOverlay();
    QCOMPARE(player().plays.size(), 1);
    QCOMPARE(player().plays.first().sound.name, name);
    QCOMPARE(player().plays.first().sound.file, QString());
    QVERIFY(contentOf(player().plays.first().sound) == bytes);
}

void tst_OverlaySounds::noneIsSilentAndStops()
{
    sounds().play(u"Bells"_s);
    QVERIFY(player().isPlaying);
    preferences->set(preference::sound, u"None"_s);
    sounds().playForOverlay();
    QVERIFY(!player().isPlaying);
    QCOMPARE(player().plays.size(), 1);
    sounds().play(u"Bells"_s);
    sounds().play({});
    QVERIFY(!player().isPlaying);
    QCOMPARE(player().plays.size(), 2);
}

void tst_OverlaySounds::aSecondSoundReplacesTheFirst()
{
    sounds().play(u"Bells"_s);
    sounds().play(u"Harp"_s);
    QVERIFY(contentOf(player().plays.last().sound) == chime(4));
    sounds().stop();
    QVERIFY(!player().isPlaying);
}

void tst_OverlaySounds::rendersAChimeOnce()
{
    sounds().play(u"Bells"_s);
    sounds().stop();
    sounds().play(u"Bells"_s);
    QCOMPARE(player().plays.size(), 2);
    QCOMPARE(player().plays.at(1).sound.bytes.get(), player().plays.at(0).sound.bytes.get());
    sounds().play(u"Glass"_s);
    sounds().play(u"Glass"_s);
    QCOMPARE(player().plays.at(3).sound.bytes.get(), player().plays.at(2).sound.bytes.get());
}

void tst_OverlaySounds::aBrokenSoundOfTheDesktopGivesWayToOurOwn()
{
    sounds().play(u"Hero"_s);
    player().fail();
    QCOMPARE(player().plays.size(), 2);
    QCOMPARE(player().plays.last().sound.name, QString());
    QVERIFY(contentOf(player().plays.last().sound) == SystemSynth::wav(u"Hero"_s));
    player().fail();
    QCOMPARE(player().plays.size(), 2);
}

void tst_OverlaySounds::aNameThatNobodyKnowsIsSilent()
{
    sounds().play(u"No such sound"_s);
    player().fail();
    QCOMPARE(player().plays.size(), 1);
    sounds().play(QString());
    QCOMPARE(player().plays.size(), 1);
}

void tst_OverlaySounds::setsTheVolume_data()
{
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<float>("volume");
    QTest::newRow("nothing") << QJsonValue(QJsonValue::Undefined) << 0.8F;
    QTest::newRow("half") << QJsonValue(0.5) << 0.5F;
    QTest::newRow("off") << QJsonValue(0) << 0.0F;
    QTest::newRow("a text") << QJsonValue(u"0.5"_s) << 0.8F;
    QTest::newRow("a boolean") << QJsonValue(true) << 0.8F;
    QTest::newRow("too much") << QJsonValue(7.5) << 1.0F;
    QTest::newRow("too little") << QJsonValue(-1) << 0.0F;
}

void tst_OverlaySounds::setsTheVolume()
{
    QFETCH(QJsonValue, stored);
    QFETCH(float, volume);
    restart({{u"soundVolume"_s, stored}});
    for (const QString &each : {u"Glass"_s, u"Chime"_s, u"custom"_s})
        sounds().play(each);
    for (const auto &each : player().plays)
        QCOMPARE(each.volume, volume);
}

void tst_OverlaySounds::playsTheUsersOwnFile()
{
    preferences->set(preference::customSoundPath, u"/somewhere/sound-1.mp3"_s);
    sounds().play(u"custom"_s);
    QCOMPARE(player().plays.size(), 1);
    QCOMPARE(player().plays.first().sound.file, u"/somewhere/sound-1.mp3"_s);
    QVERIFY(!player().plays.first().sound.bytes);
    QCOMPARE(player().plays.first().sound.name, QString());
}

void tst_OverlaySounds::glassStandsInForTheUsersOwnFile_data()
{
    QTest::addColumn<QJsonObject>("stored");
    QTest::newRow("no path") << QJsonObject();
    QTest::newRow("no text as path") << QJsonObject{{u"customSoundPath"_s, 5}};
    QTest::newRow("empty path") << QJsonObject{{u"customSoundPath"_s, u""_s}};
    QTest::newRow("a file that cannot be played") << QJsonObject{{u"customSoundPath"_s, u"/broken.mp3"_s}};
}

void tst_OverlaySounds::glassStandsInForTheUsersOwnFile()
{
    QFETCH(QJsonObject, stored);
    stored.insert(u"sound"_s, u"custom"_s);
    restart(stored);
    sounds().playForOverlay();
    if (!player().plays.last().sound.file.isEmpty())
        player().fail();
    QCOMPARE(player().plays.last().sound.name, u"Glass"_s);
    QVERIFY(contentOf(player().plays.last().sound) == SystemSynth::wav(u"Glass"_s));
    QVERIFY(player().isPlaying);
}

void tst_OverlaySounds::glassStandsInForSpotify_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<bool>("installed");
    QTest::newRow("no link") << QString() << true;
    QTest::newRow("another link") << u"https://example.com/track/abc"_s << true;
    QTest::newRow("no Spotify") << songLink << false;
}

void tst_OverlaySounds::glassStandsInForSpotify()
{
    QFETCH(QString, link);
    QFETCH(bool, installed);
    restart({{u"sound"_s, u"spotify"_s}, {u"spotifyLink"_s, link}});
    recorded->players.installed = installed;
    sounds().playForOverlay();
    QCOMPARE(player().plays.size(), 1);
    QCOMPARE(player().plays.first().sound.name, u"Glass"_s);
    sounds().stop();
    QCOMPARE(recorded->players.asked, QStringList());
}

void tst_OverlaySounds::playsAndPausesSpotify()
{
    restart({{u"sound"_s, u"spotify"_s}, {u"spotifyLink"_s, songLink}, {u"pauseMusic"_s, true}});
    recorded->players.installed = true;
    sounds().playForOverlay();
    QCOMPARE(recorded->players.asked, (QStringList{u"pause others"_s, u"play spotify:track:abc"_s}));
    QCOMPARE(player().plays.size(), 0);
    sounds().stop();
    QCOMPARE(recorded->players.asked.mid(2), QStringList{u"pause Spotify"_s});
    sounds().stop();
    sounds().play(u"Glass"_s);
    QCOMPARE(recorded->players.asked.size(), 3);
}

void tst_OverlaySounds::anotherSoundEndsTheSong_data()
{
    QTest::addColumn<QString>("next");
    QTest::newRow("a chime") << u"Bells"_s;
    QTest::newRow("a system sound") << u"Glass"_s;
    QTest::newRow("silence") << u"None"_s;
}

void tst_OverlaySounds::anotherSoundEndsTheSong()
{
    QFETCH(QString, next);
    restart({{u"sound"_s, u"spotify"_s}, {u"spotifyLink"_s, songLink}});
    recorded->players.installed = true;
    sounds().playForOverlay();
    sounds().play(next);
    QCOMPARE(recorded->players.asked, (QStringList{u"play spotify:track:abc"_s, u"pause Spotify"_s}));
}

void tst_OverlaySounds::aNameOfTheCacheIsNoSound()
{
    sounds().play(u"Glass"_s);
    QCOMPARE(player().plays.size(), 1);
    sounds().play(u"system/Glass"_s);
    QVERIFY(!player().plays.last().sound.bytes);
}

void tst_OverlaySounds::pausesTheUsersMusic_data()
{
    QTest::addColumn<bool>("pauseMusic");
    QTest::addColumn<QString>("sound");
    QTest::addColumn<QStringList>("log");
    const QStringList both{u"pause Spotify"_s, u"pause others"_s};
    QTest::newRow("a sound") << true << u"Glass"_s << both;
    QTest::newRow("silence") << true << u"None"_s << both;
    QTest::newRow("not wanted") << false << u"Glass"_s << QStringList();
}

void tst_OverlaySounds::pausesTheUsersMusic()
{
    QFETCH(bool, pauseMusic);
    QFETCH(QString, sound);
    QFETCH(QStringList, log);
    restart({{u"sound"_s, sound}, {u"pauseMusic"_s, pauseMusic}});
    sounds().playForOverlay();
    QCOMPARE(recorded->players.asked, log);
    sounds().stop();
    QCOMPARE(recorded->players.asked, log);
}

QTEST_GUILESS_MAIN(tst_OverlaySounds)
#include "tst_OverlaySounds.moc"
