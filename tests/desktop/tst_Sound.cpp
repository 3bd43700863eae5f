#include "support/ChildProcess.h"
#include "support/EventLoopWatch.h"
#include "support/RecordedSounds.h"
#include "support/SoundServer.h"

#include "base/Clock.h"
#include "sound/ChildSoundPlayer.h"
#include "sound/ChimeSynth.h"
#include "sound/SystemSynth.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <cstdio>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

constexpr double pitch = 660; // Hz
/// One of so many has to leave the event loop turning: somebody else may have the processor for a while.
constexpr int rounds = 4;

QString program()
{
    return qEnvironmentVariable("KELP_BINARY_DIR", QCoreApplication::applicationDirPath() + u"/.."_s) +
           u"/kelp-sound"_s;
}

double decibels(double ratio)
{
    return 20 * std::log10(ratio);
}

/// A sound player that a test can hear and make sounds of Kelp's with.
struct Ears
{
    explicit Ears(Preferences &preferences, Clock &clock)
        : player(clock, program()),
          control(players),
          music(preferences, control),
          sounds(preferences, clock, player, music, folder.filePath(u"Kelp"_s)),
          started(&player, &ChildSoundPlayer::started),
          finished(&player, &ChildSoundPlayer::finished)
    {
    }

    ChildSoundPlayer player;
    FakeMusicPlayers players;
    MusicControl control;
    OverlayMusic music;
    QTemporaryDir folder;
    OverlaySounds sounds;
    QSignalSpy started;
    QSignalSpy finished;
};

} // namespace

/// What is really heard: the child process, GStreamer and a sound server whose output is recorded.
class tst_Sound : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void aFileIsHeard_data();
    void aFileIsHeard();
    void aSoundOfOurOwnIsHeard_data();
    void aSoundOfOurOwnIsHeard();
    void noneIsSilent();
    void startsSoon();
    void theDesktopsSoundGoesFirst();
    void aBrokenSoundOfTheDesktopGivesWayToOurOwn();
    void followsTheInheritanceOfThemes();

    void glassIsHeardInsteadOfWhatCannotBePlayed_data();
    void glassIsHeardInsteadOfWhatCannotBePlayed();
    void adoptsSoundFiles_data();
    void adoptsSoundFiles();
    void adoptsTheFilmsSound();
    void refusesWhatIsNoSound_data();
    void refusesWhatIsNoSound();
    void comesToAnEndWithDamagedFiles();
    void tellsThatTheDiskIsFull();

    void survivesWithoutAServer();
    void survivesTheEndOfTheServer();

private:
    void makeFile(const QString &name, const QStringList &arguments);
    [[nodiscard]] QString path(const QString &name) const { return files.filePath(name); }
    void waitFor(double seconds);
    void write(const QString &file, const QByteArray &content);
    void makeTheme(const QString &name, const QByteArray &index);
    [[nodiscard]] QString badFile(const QString &kind);
    void adopt(const QString &file, std::optional<Result<void, SoundError>> &outcome);

    SystemClock clock;
    QTemporaryDir files;
    QTemporaryDir home;
    std::unique_ptr<SoundServer> server;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<Ears> ears;
};

void tst_Sound::makeFile(const QString &name, const QStringList &arguments)
{
    QProcess ffmpeg;
    ffmpeg.start(u"ffmpeg"_s, QStringList{u"-loglevel"_s, u"error"_s, u"-y"_s} + arguments + QStringList{path(name)});
    QVERIFY(ffmpeg.waitForFinished(60'000));
    QVERIFY2(ffmpeg.exitCode() == 0, ffmpeg.readAllStandardError().constData());
}

void tst_Sound::write(const QString &file, const QByteArray &content)
{
    QVERIFY(QDir().mkpath(QFileInfo(file).path()));
    QFile target(file);
    QVERIFY(target.open(QIODevice::WriteOnly));
    QCOMPARE(target.write(content), content.size());
}

void tst_Sound::initTestCase()
{
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CACHE_HOME", home.filePath(u".cache"_s).toUtf8());
    qputenv("XDG_CONFIG_HOME", home.filePath(u".config"_s).toUtf8());
    qputenv("XDG_DATA_HOME", home.filePath(u".local/share"_s).toUtf8());
    qputenv("GSETTINGS_BACKEND", "memory");
    server = std::make_unique<SoundServer>();
    QVERIFY2(server->start(), qPrintable(server->problem()));

    const QStringList tone{u"-f"_s, u"lavfi"_s, u"-i"_s, u"aevalsrc=0.5*sin(2*PI*660*t):s=44100:d=6"_s};
    for (const QString &each : {u"tone.wav"_s, u"tone.mp3"_s, u"tone.flac"_s})
        makeFile(each, tone);
    makeFile(u"tone.ogg"_s, tone + QStringList{u"-c:a"_s, u"libvorbis"_s});
    makeFile(u"tone.opus"_s, tone + QStringList{u"-c:a"_s, u"libopus"_s});
    makeFile(u"tone.m4a"_s, tone + QStringList{u"-c:a"_s, u"aac"_s});
    const QStringList picture{u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=d=1:r=5:s=160x120"_s};
    makeFile(u"picture.png"_s, picture + QStringList{u"-frames:v"_s, u"1"_s});
    makeFile(u"silent-film.mp4"_s, picture);
    makeFile(u"film.mp4"_s, picture + tone + QStringList{u"-shortest"_s});

    QProcess warm;
    warm.start(program(), {u"warm"_s});
    QVERIFY(warm.waitForFinished(60'000));
    QCOMPARE(warm.exitCode(), 0);
}

void tst_Sound::init()
{
    ears.reset();
    preferences = std::make_unique<Preferences>();
    ears = std::make_unique<Ears>(*preferences, clock);
    QDir(home.filePath(u".local/share/sounds"_s)).removeRecursively();
    // What was played before is over.
    QTRY_VERIFY_WITH_TIMEOUT(server->heard(server->recorded() - 0.1, 0.1).peak == 0, 20'000);
}

void tst_Sound::cleanupTestCase()
{
    ears.reset();
    server.reset();
}

/// Until so much has been recorded in all.
void tst_Sound::waitFor(double seconds)
{
    QTRY_VERIFY_WITH_TIMEOUT(server->recorded() >= seconds, 20'000);
}

void tst_Sound::aFileIsHeard_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &each : {u"wav"_s, u"mp3"_s, u"ogg"_s, u"flac"_s, u"opus"_s, u"m4a"_s})
        QTest::newRow(qPrintable(each)) << u"tone."_s + each;
}

void tst_Sound::aFileIsHeard()
{
    QFETCH(QString, name);
    preferences->set(preference::sound, u"custom"_s);
    preferences->set(preference::customSoundPath, path(name));
    QList<double> levels;
    for (const double volume : {0.8, 0.2}) {
        preferences->set(preference::soundVolume, volume);
        ears->started.clear();
        ears->sounds.playForOverlay();
        QTRY_COMPARE(ears->started.size(), 1);
        const double begin = server->recorded();
        waitFor(begin + 1);
        const SoundServer::Measured tone = server->heard(begin + 0.5, 0.4);
        QVERIFY2(std::abs(tone.frequency - pitch) < 5, qPrintable(QString::number(tone.frequency)));
        const double expected = 0.5 / std::sqrt(2.0) * volume;
        QVERIFY2(std::abs(decibels(tone.level / expected)) < 1, qPrintable(QString::number(tone.level / expected)));
        levels.append(tone.level);

        ears->sounds.stop();
        const double stopped = server->recorded();
        waitFor(stopped + 0.4);
        const SoundServer::Measured rest = server->heard(stopped + 0.1, 0.3);
        QVERIFY2(rest.peak == 0, qPrintable(QString::number(rest.peak)));
    }
    QVERIFY(std::abs(decibels(levels.at(0) / levels.at(1)) - decibels(4)) < 1);
}

void tst_Sound::aSoundOfOurOwnIsHeard_data()
{
    QTest::addColumn<QString>("sound");
    QTest::newRow("a chime") << u"Arcade"_s;
    QTest::newRow("a system sound") << u"Glass"_s;
    QTest::newRow("another") << u"Submarine"_s;
}

void tst_Sound::aSoundOfOurOwnIsHeard()
{
    QFETCH(QString, sound);
    const QByteArray wav = SystemSynth::wav(sound).value_or(ChimeSynth::wav(ChimeSynth::presets().last()));
    write(path(u"original.wav"_s), wav);
    const SoundServer::Measured original = SoundServer::ofFile(path(u"original.wav"_s));
    preferences->set(preference::sound, sound);
    for (const double volume : {1.0, 0.25}) {
        preferences->set(preference::soundVolume, volume);
        ears->started.clear();
        ears->finished.clear();
        const double begin = server->recorded();
        ears->sounds.playForOverlay();
        QTRY_COMPARE_WITH_TIMEOUT(ears->finished.size(), 1, 10'000);
        QCOMPARE(ears->started.size(), 1);
        const double end = server->recorded() + 0.3;
        waitFor(end);
        const SoundServer::Measured heard = server->heard(begin, end - begin);
        QVERIFY2(std::abs(heard.frequency / original.frequency - 1) < 0.03,
                 qPrintable(QString::number(heard.frequency)));
        const double difference = heard.energy() - original.energy() - decibels(volume);
        QVERIFY2(std::abs(difference) < 1, qPrintable(QString::number(difference)));
    }

    ears->started.clear();
    ears->sounds.playForOverlay();
    QTRY_COMPARE(ears->started.size(), 1);
    ears->sounds.stop();
    const double stopped = server->recorded();
    waitFor(stopped + 0.4);
    QCOMPARE(server->heard(stopped + 0.1, 0.3).peak, 0.0);
}

void tst_Sound::noneIsSilent()
{
    preferences->set(preference::sound, u"None"_s);
    const double begin = server->recorded();
    ears->sounds.playForOverlay();
    waitFor(begin + 0.6);
    QCOMPARE(server->heard(begin, 0.6).peak, 0.0);
    QCOMPARE(ears->started.size(), 0);
}

void tst_Sound::startsSoon()
{
    for (const QString &sound : {u"Glass"_s, u"Singing bowl"_s}) {
        QList<qint64> times;
        for (int round = 0; round < 5; ++round) {
            QElapsedTimer timer;
            QObject context;
            connect(&ears->player, &ChildSoundPlayer::started, &context, [&] { times.append(timer.elapsed()); });
            timer.start();
            ears->sounds.play(sound);
            QTRY_COMPARE(times.size(), round + 1);
        }
        std::sort(times.begin(), times.end());
        std::printf("%s, from asked for to going out, median of 5: %lld ms\n", qPrintable(sound),
                    static_cast<long long>(times.at(2)));
        QVERIFY(times.at(2) < 1000);
    }
}

void tst_Sound::makeTheme(const QString &name, const QByteArray &index)
{
    write(home.filePath(u".local/share/sounds/%1/index.theme"_s.arg(name)), "[Sound Theme]\nName=T\n" + index);
}

void tst_Sound::theDesktopsSoundGoesFirst()
{
    makeTheme(u"freedesktop"_s, "Directories=stereo\n");
    const QString ours = home.filePath(u".local/share/sounds/freedesktop/stereo/glass.oga"_s);
    QVERIFY(QDir().mkpath(QFileInfo(ours).path()));
    QVERIFY(QFile::copy(path(u"tone.ogg"_s), ours));
    ears->sounds.playForOverlay();
    QTRY_COMPARE(ears->started.size(), 1);
    const double begin = server->recorded();
    waitFor(begin + 0.8);
    const double heard = server->heard(begin + 0.3, 0.4).frequency;
    QVERIFY2(std::abs(heard - pitch) < 5, qPrintable(QString::number(heard)));
}

void tst_Sound::aBrokenSoundOfTheDesktopGivesWayToOurOwn()
{
    write(home.filePath(u".local/share/sounds/freedesktop/Glass.wav"_s), "RIFF this is no sound");
    const double begin = server->recorded();
    ears->sounds.playForOverlay();
    QTRY_COMPARE(ears->started.size(), 1);
    waitFor(server->recorded() + 0.5);
    QVERIFY(server->heard(begin, server->recorded() - begin).peak > 0.1);
}

void tst_Sound::followsTheInheritanceOfThemes()
{
    // Loops and names that lead elsewhere do no harm.
    makeTheme(u"freedesktop"_s, "Directories=../../../..,/etc,stereo\nInherits=a,b\n");
    makeTheme(u"a"_s, "Inherits=freedesktop,a,../b\n");
    makeTheme(u"b"_s, "Directories=.\n");
    QVERIFY(QFile::copy(path(u"tone.wav"_s), home.filePath(u".local/share/sounds/b/chirp.wav"_s)));
    ears->sounds.play(u"chirp"_s);
    QTRY_COMPARE(ears->started.size(), 1);
    for (const QString &name : {u"../b/chirp"_s, u"nothing of that name"_s}) {
        ears->finished.clear();
        ears->player.play({.name = name}, 1, [this] { Q_EMIT ears->player.finished(); });
        QTRY_COMPARE(ears->finished.size(), 1);
    }
    QCOMPARE(ears->started.size(), 1);
}

/// A file named as a sound that is none.
QString tst_Sound::badFile(const QString &kind)
{
    const QString file = path(kind + u".mp3"_s);
    QFile::remove(file);
    if (kind == u"picture")
        QFile::copy(path(u"picture.png"_s), file);
    else if (kind == u"film without sound")
        QFile::copy(path(u"silent-film.mp4"_s), file);
    else if (kind == u"empty" || kind == u"huge")
        write(file, {});
    else if (kind == u"noise")
        write(file, QByteArray(100'000, 'x'));
    else if (kind == u"list")
        write(file, "#EXTM3U\n" + QFile::encodeName(path(u"tone.wav"_s)) + '\n');
    else if (kind == u"list of addresses")
        write(file, "[playlist]\nFile1=file://" + QFile::encodeName(path(u"tone.wav"_s)) + "\nNumberOfEntries=1\n");
    else if (kind == u"stream")
        write(file, "#EXTM3U\n#EXT-X-TARGETDURATION:5\n#EXTINF:5,\n" + QFile::encodeName(path(u"tone.mp3"_s)) + '\n');
    else if (kind == u"session")
        write(file, "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nm=audio 5004 RTP/AVP 0\n");
    else if (kind == u"folder")
        QDir().mkpath(file);
    if (kind == u"huge")
        QFile(file).resize(2LL << 30); // nothing of it is on the disk
    return file;
}

void tst_Sound::refusesWhatIsNoSound_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *each : {"picture", "film without sound", "huge", "empty", "noise", "list", "list of addresses",
                             "stream", "session", "folder", "vanished"})
        QTest::newRow(each) << QString::fromLatin1(each);
}

void tst_Sound::refusesWhatIsNoSound()
{
    QFETCH(QString, kind);
    const QString file = badFile(kind);
    double shortest = EventLoopWatch::noticeable;
    for (int round = 1; round <= rounds && shortest >= EventLoopWatch::noticeable; ++round) {
        const EventLoopWatch watch;
        std::optional<Result<void, SoundError>> outcome;
        adopt(file, outcome);
        QVERIFY(!*outcome);
        QCOMPARE(outcome->error().kind, SoundError::Kind::corruptFile);
        shortest = watch.longestGap();
    }
    QVERIFY2(shortest < EventLoopWatch::noticeable, qPrintable(QString::number(shortest)));
    QVERIFY(!preferences->contains(preference::customSoundPath));
    QCOMPARE(QDir(ears->folder.filePath(u"Kelp"_s)).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void tst_Sound::glassIsHeardInsteadOfWhatCannotBePlayed_data()
{
    refusesWhatIsNoSound_data();
}

void tst_Sound::glassIsHeardInsteadOfWhatCannotBePlayed()
{
    QFETCH(QString, kind);
    preferences->set(preference::sound, u"custom"_s);
    preferences->set(preference::customSoundPath, badFile(kind));
    double shortest = EventLoopWatch::noticeable;
    for (int round = 1; round <= rounds && shortest >= EventLoopWatch::noticeable; ++round) {
        ears->started.clear();
        const EventLoopWatch watch;
        ears->sounds.playForOverlay();
        QTRY_COMPARE_WITH_TIMEOUT(ears->started.size(), 1, 15'000);
        shortest = watch.longestGap();
    }
    QVERIFY2(shortest < EventLoopWatch::noticeable, qPrintable(QString::number(shortest)));
    const double begin = server->recorded();
    waitFor(begin + 0.5);
    QVERIFY(server->heard(begin, 0.5).peak > 0.1);
}

void tst_Sound::adopt(const QString &file, std::optional<Result<void, SoundError>> &outcome)
{
    ears->sounds.setCustom(QUrl::fromLocalFile(file), this,
                           [&outcome](const Result<void, SoundError> &result) { outcome = result; });
    QTRY_VERIFY_WITH_TIMEOUT(outcome, 40'000);
}

void tst_Sound::adoptsSoundFiles_data()
{
    aFileIsHeard_data();
}

void tst_Sound::adoptsSoundFiles()
{
    QFETCH(QString, name);
    std::optional<Result<void, SoundError>> outcome;
    adopt(path(name), outcome);
    QVERIFY(*outcome);
    const QString copy = preferences->get(preference::customSoundPath);
    QCOMPARE(preferences->get(preference::customSoundName), u"tone"_s);
    QFile original(path(name));
    QFile copied(copy);
    QVERIFY(original.open(QIODevice::ReadOnly) && copied.open(QIODevice::ReadOnly));
    QVERIFY(original.readAll() == copied.readAll());
    QCOMPARE(copied.permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
             QFile::Permissions());
}

/// Whoever likes the sound of a film may have it.
void tst_Sound::adoptsTheFilmsSound()
{
    std::optional<Result<void, SoundError>> outcome;
    adopt(path(u"film.mp4"_s), outcome);
    QVERIFY(*outcome);
    ears->sounds.play(u"custom"_s);
    QTRY_COMPARE(ears->started.size(), 1);
}

void tst_Sound::comesToAnEndWithDamagedFiles()
{
    QRandomGenerator random(1);
    int adopted = 0;
    for (int round = 0; round < 48; ++round) {
        const QStringList kinds{u"wav"_s, u"mp3"_s, u"ogg"_s, u"flac"_s, u"opus"_s, u"m4a"_s};
        QFile original(path(u"tone."_s + kinds.at(round % kinds.size())));
        QVERIFY(original.open(QIODevice::ReadOnly));
        QByteArray content = original.read(60'000);
        for (int damage = 0; damage < 1 + round; ++damage)
            content[random.bounded(static_cast<int>(damage % 2 ? content.size() : 600))] =
                static_cast<char>(random.bounded(256));
        content.truncate(content.size() - random.bounded(20'000));
        write(path(u"damaged"_s), content);
        std::optional<Result<void, SoundError>> outcome;
        adopt(path(u"damaged"_s), outcome);
        adopted += outcome->has_value();
    }
    // Some of the damage can be decoded all the same, some cannot.
    QVERIFY(adopted > 0 && adopted < 48);
}

void tst_Sound::tellsThatTheDiskIsFull()
{
    std::optional<Result<void, SoundError>> outcome;
    ears->player.import(path(u"tone.ogg"_s), u"/proc/no-such-file"_s, this,
                        [&outcome](const Result<void, SoundError> &result) { outcome = result; });
    QTRY_VERIFY(outcome);
    QCOMPARE(outcome->error().kind, SoundError::Kind::copy);
}

void tst_Sound::survivesWithoutAServer()
{
    const QByteArray address = qgetenv("PULSE_SERVER");
    qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(path(u"no-socket"_s)));
    double shortest = EventLoopWatch::noticeable;
    for (int round = 1; round <= rounds && shortest >= EventLoopWatch::noticeable; ++round) {
        ears->finished.clear();
        const EventLoopWatch watch;
        ears->sounds.playForOverlay();
        QTRY_COMPARE_WITH_TIMEOUT(ears->finished.size(), 1, 10'000);
        shortest = watch.longestGap();
    }
    qputenv("PULSE_SERVER", address);
    QVERIFY2(shortest < EventLoopWatch::noticeable, qPrintable(QString::number(shortest)));
    QCOMPARE(ears->started.size(), 0);
}

void tst_Sound::survivesTheEndOfTheServer()
{
    double shortest = EventLoopWatch::noticeable;
    for (int round = 1; round <= rounds && shortest >= EventLoopWatch::noticeable; ++round) {
        SoundServer other;
        QVERIFY2(other.start(), qPrintable(other.problem()));
        ears->started.clear();
        ears->finished.clear();
        ears->sounds.play(u"Singing bowl"_s);
        QTRY_COMPARE(ears->started.size(), 1);
        const EventLoopWatch watch;
        other.killHard();
        QTRY_COMPARE(ears->finished.size(), 1);
        shortest = watch.longestGap();
    }
    qputenv("PULSE_SERVER", server->address().toUtf8());
    QVERIFY2(shortest < EventLoopWatch::noticeable, qPrintable(QString::number(shortest)));
    // The next one is heard again.
    ears->started.clear();
    ears->sounds.play(u"Glass"_s);
    QTRY_COMPARE(ears->started.size(), 1);
}

QTEST_GUILESS_MAIN(tst_Sound)
#include "tst_Sound.moc"
