#pragma once

#include "support/RecordedSounds.h"
#include "support/SoundServer.h"

#include "base/Clock.h"
#include "sound/ChildSoundPlayer.h"

#include <QSignalSpy>
#include <QTemporaryDir>

namespace kelp::test {

/// A sound player that a test can hear, and sounds of Kelp's made with it.
struct Ears
{
    Ears(Preferences &preferences, Clock &clock);

    ChildSoundPlayer player;
    FakeMusicPlayers players;
    MusicControl control;
    OverlayMusic music;
    QTemporaryDir folder;
    OverlaySounds sounds;
    QSignalSpy started;
    QSignalSpy finished;
};

/// The child process, GStreamer and a sound server whose output is recorded, for a home without any sounds.
class SoundRig
{
public:
    static constexpr double pitch = 660; ///< of what `makeTone` makes, in Hz

    /// The program that plays.
    [[nodiscard]] static QString program();

    /// Once for all tests: whether all of it is up.
    [[nodiscard]] bool start();
    /// New ears and preferences for a test. Whether what was played before is over.
    [[nodiscard]] bool restart();
    void end();

    /// A file of this test's, made by ffmpeg.
    [[nodiscard]] bool makeFile(const QString &name, const QStringList &arguments) const;
    /// A tone of six seconds.
    [[nodiscard]] bool makeTone(const QString &name, const QStringList &encoder = {}) const;
    [[nodiscard]] QString path(const QString &name) const { return m_files.filePath(name); }
    [[nodiscard]] static bool write(const QString &file, const QByteArray &content);
    [[nodiscard]] QString inHome(const QString &name) const { return m_home.filePath(name); }
    /// Returns when so much has been recorded in all, in seconds; false where that takes too long.
    [[nodiscard]] bool waitFor(double seconds) const;

    std::unique_ptr<SoundServer> server;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<Ears> ears;

private:
    SystemClock m_clock;
    QTemporaryDir m_files;
    QTemporaryDir m_home;
};

} // namespace kelp::test
