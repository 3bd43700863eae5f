#include "sound/OverlaySounds.h"

#include "sound/ChimeSynth.h"
#include "sound/SystemSynth.h"
#include "support/FakeClock.h"
#include "support/RecordedSounds.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <sys/stat.h>

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
    void pausesTheUsersMusic_data();
    void pausesTheUsersMusic();

    void adoptsAFile_data();
    void adoptsAFile();
    void adoptsAFileOnceMore();
    void adoptsItsOwnCopy();
    void adoptsThoughNobodyWaits();
    void refusesWhatIsNoSound();
    void refusesWhatIsNoFile_data();
    void refusesWhatIsNoFile();
    void leavesAllAsItWasWhenTheCopyFails_data();
    void leavesAllAsItWasWhenTheCopyFails();
    void tellsWhenItsFolderCannotBeMade();
    void neverDeletesWhatIsNoCopy_data();
    void neverDeletesWhatIsNoCopy();

private:
    void restart(const QJsonObject &stored);
    [[nodiscard]] QString makeFile(const QString &name, const QByteArray &content);
    [[nodiscard]] std::optional<Result<void, SoundError>> adopt(const QString &file);
    [[nodiscard]] QStringList copies() const;
    [[nodiscard]] QString stored(const PreferenceKey<QString> &key) const { return preferences->get(key); }
    [[nodiscard]] FakeSoundPlayer &player() const { return recorded->player; }
    [[nodiscard]] OverlaySounds &sounds() const { return recorded->sounds(); }

    FakeClock clock{{1761731940.9}};
    QObject context;
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
    recorded->players.hasSpotify = installed;
    sounds().playForOverlay();
    QCOMPARE(player().plays.size(), 1);
    QCOMPARE(player().plays.first().sound.name, u"Glass"_s);
    sounds().stop();
    QCOMPARE(recorded->players.log, QStringList());
}

void tst_OverlaySounds::playsAndPausesSpotify()
{
    restart({{u"sound"_s, u"spotify"_s}, {u"spotifyLink"_s, songLink}, {u"pauseMusic"_s, true}});
    recorded->players.hasSpotify = true;
    sounds().playForOverlay();
    QCOMPARE(recorded->players.log, (QStringList{u"pause others"_s, u"play spotify:track:abc"_s}));
    QCOMPARE(player().plays.size(), 0);
    sounds().stop();
    QCOMPARE(recorded->players.log.mid(2), QStringList{u"pause Spotify"_s});
    sounds().stop();
    sounds().play(u"Glass"_s);
    QCOMPARE(recorded->players.log.size(), 3);
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
    QCOMPARE(recorded->players.log, log);
    sounds().stop();
    QCOMPARE(recorded->players.log, log);
}

QString tst_OverlaySounds::makeFile(const QString &name, const QByteArray &content)
{
    const QString path = recorded->folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s cannot be written", qPrintable(path));
    return path;
}

/// What the caller is told, if anything.
std::optional<Result<void, SoundError>> tst_OverlaySounds::adopt(const QString &file)
{
    std::optional<Result<void, SoundError>> outcome;
    const qsizetype imports = player().imports.size();
    sounds().setCustom(QUrl::fromLocalFile(file), &context,
                       [&](const Result<void, SoundError> &result) { outcome = result; });
    if (outcome)
        qFatal("it was told at once");
    if (player().imports.size() > imports)
        player().finishImport();
    clock.advance(0);
    return outcome;
}

QStringList tst_OverlaySounds::copies() const
{
    return QDir(recorded->folder.filePath(u"Kelp"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

void tst_OverlaySounds::adoptsAFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("copy");
    QTest::addColumn<QString>("display");
    QTest::newRow("usual") << u"My song.mp3"_s << u"sound-1761731940.mp3"_s << u"My song"_s;
    QTest::newRow("two dots") << u"a.b.Ogg"_s << u"sound-1761731940.Ogg"_s << u"a.b"_s;
    QTest::newRow("no extension") << u"noise"_s << u"sound-1761731940.audio"_s << u"noise"_s;
    QTest::newRow("hidden") << u".noise"_s << u"sound-1761731940.audio"_s << u".noise"_s;
    QTest::newRow("dot at the end") << u"noise."_s << u"sound-1761731940.audio"_s << u"noise."_s;
    QTest::newRow("no extension but a dot") << u"1. Satz"_s << u"sound-1761731940.audio"_s << u"1. Satz"_s;
    QTest::newRow("not of this world") << u"ŝ♫\u202e.wav"_s << u"sound-1761731940.wav"_s << u"ŝ♫\u202e"_s;
}

void tst_OverlaySounds::adoptsAFile()
{
    QFETCH(QString, name);
    QFETCH(QString, copy);
    QFETCH(QString, display);
    const QString original = makeFile(name, "la la la");
    const auto outcome = adopt(original);
    QVERIFY(outcome && *outcome);
    const QString path = recorded->folder.filePath(u"Kelp/"_s + copy);
    QCOMPARE(stored(preference::customSoundPath), path);
    QCOMPARE(stored(preference::customSoundName), display);
    QCOMPARE(copies(), QStringList{copy});
    QCOMPARE(contentOf(path), "la la la"_ba);
    QCOMPARE(contentOf(original), "la la la"_ba);
    QCOMPARE(player().imports, QStringList{original});
}

void tst_OverlaySounds::adoptsAFileOnceMore()
{
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    clock.advance(60);
    QVERIFY(*adopt(makeFile(u"two.ogg"_s, "2")));
    QCOMPARE(copies(), QStringList{u"sound-1761732000.ogg"_s});
    QCOMPARE(stored(preference::customSoundName), u"two"_s);
    // Within the same second the new one has the old one's name.
    QVERIFY(*adopt(makeFile(u"three.ogg"_s, "3")));
    QCOMPARE(copies(), QStringList{u"sound-1761732000.ogg"_s});
    QCOMPARE(contentOf(stored(preference::customSoundPath)), "3"_ba);
}

void tst_OverlaySounds::adoptsItsOwnCopy()
{
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    clock.advance(60);
    QVERIFY(*adopt(stored(preference::customSoundPath)));
    QCOMPARE(copies(), QStringList{u"sound-1761732000.mp3"_s});
    QCOMPARE(contentOf(stored(preference::customSoundPath)), "1"_ba);
}

void tst_OverlaySounds::adoptsThoughNobodyWaits()
{
    auto view = std::make_unique<QObject>();
    sounds().setCustom(QUrl::fromLocalFile(makeFile(u"one.mp3"_s, "1")), view.get(),
                       [](const Result<void, SoundError> &) { QFAIL("nobody is there to be told"); });
    view.reset();
    player().finishImport();
    QCOMPARE(stored(preference::customSoundName), u"one"_s);
}

void tst_OverlaySounds::refusesWhatIsNoSound()
{
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    const QJsonObject before = preferences->values();
    player().importOutcome = Failure(SoundError{SoundError::Kind::corruptFile});
    const auto outcome = adopt(makeFile(u"letter.mp3"_s, "Dear Sir"));
    QVERIFY(outcome && !*outcome);
    QCOMPARE(outcome->error().kind, SoundError::Kind::corruptFile);
    QCOMPARE(outcome->error().description(), u"The file couldn’t be opened because it isn’t in the correct format."_s);
    QCOMPARE(preferences->values(), before);
    QCOMPARE(copies(), QStringList{u"sound-1761731940.mp3"_s});
}

void tst_OverlaySounds::refusesWhatIsNoFile_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::newRow("nothing") << QUrl();
    QTest::newRow("in the net") << QUrl(u"https://example.com/song.mp3"_s);
    QTest::newRow("data") << QUrl(u"data:audio/wav;base64,UklGRg=="_s);
}

void tst_OverlaySounds::refusesWhatIsNoFile()
{
    QFETCH(QUrl, url);
    std::optional<Result<void, SoundError>> outcome;
    sounds().setCustom(url, &context, [&](const Result<void, SoundError> &result) { outcome = result; });
    clock.advance(0);
    QVERIFY(outcome && !*outcome);
    QCOMPARE(outcome->error().kind, SoundError::Kind::corruptFile);
    QCOMPARE(player().imports.size(), 0);
    QVERIFY(!preferences->contains(preference::customSoundPath));
}

void tst_OverlaySounds::leavesAllAsItWasWhenTheCopyFails_data()
{
    QTest::addColumn<bool>("atTheEnd");
    QTest::newRow("while copying") << false;
    QTest::newRow("while renaming") << true;
}

void tst_OverlaySounds::leavesAllAsItWasWhenTheCopyFails()
{
    QFETCH(bool, atTheEnd);
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    const QJsonObject before = preferences->values();
    clock.advance(60);
    if (atTheEnd)
        QVERIFY(QDir().mkdir(recorded->folder.filePath(u"Kelp/sound-1761732000.ogg"_s)));
    else
        player().importOutcome = Failure(SoundError{SoundError::Kind::copy});
    const auto outcome = adopt(makeFile(u"two.ogg"_s, "2"));
    QVERIFY(outcome && !*outcome);
    QCOMPARE(outcome->error().kind, SoundError::Kind::copy);
    QVERIFY(!outcome->error().description().isEmpty());
    QCOMPARE(preferences->values(), before);
    QCOMPARE(contentOf(stored(preference::customSoundPath)), "1"_ba);
    QVERIFY(copies().filter(u".tmp"_s).isEmpty());
}

void tst_OverlaySounds::tellsWhenItsFolderCannotBeMade()
{
    const QString original = makeFile(u"one.mp3"_s, "1");
    (void)makeFile(u"Kelp"_s, "in the way");
    const auto outcome = adopt(original);
    QVERIFY(outcome && !*outcome);
    QCOMPARE(outcome->error().kind, SoundError::Kind::folder);
    QVERIFY(!outcome->error().description().isEmpty());
    QVERIFY(!preferences->contains(preference::customSoundPath));
}

void tst_OverlaySounds::neverDeletesWhatIsNoCopy_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("somewhere else") << u"sound-precious.mp3"_s;
    QTest::newRow("another file of ours") << u"Kelp/accounts.json"_s;
    QTest::newRow("by a detour") << u"Kelp/../sound-precious.mp3"_s;
}

void tst_OverlaySounds::neverDeletesWhatIsNoCopy()
{
    QFETCH(QString, name);
    QVERIFY(QDir().mkdir(recorded->folder.filePath(u"Kelp"_s)));
    preferences->set(preference::customSoundPath, makeFile(name, "precious"));
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    QCOMPARE(contentOf(recorded->folder.filePath(name)), "precious"_ba);
}

QTEST_GUILESS_MAIN(tst_OverlaySounds)
#include "tst_OverlaySounds.moc"
