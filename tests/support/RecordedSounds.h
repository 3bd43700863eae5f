#pragma once

#include "preferences/Preferences.h"
#include "sound/MusicControl.h"
#include "sound/OverlayMusic.h"
#include "sound/OverlaySounds.h"
#include "sound/SoundBytes.h"
#include "sound/SoundPlayer.h"
#include "support/FakeMusicPlayers.h"

#include <QFile>
#include <QList>
#include <QTemporaryDir>

namespace kelp::test {

/// Notes what it is asked to play; `fail` lets the sound that plays fail.
class FakeSoundPlayer final : public SoundPlayer
{
public:
    struct Play
    {
        Sound sound;
        float volume;
    };

    void play(const Sound &sound, float volume, std::function<void()> failed) override
    {
        stop();
        plays.append({sound, volume});
        isPlaying = true;
        m_failed = std::move(failed);
    }
    void stop() override
    {
        ++stops;
        isPlaying = false;
        m_failed = {};
    }
    void import(const QString &file, const QString &copy, QObject *,
                std::function<void(Result<void, SoundError>)> done) override
    {
        imports.append(file);
        if (importOutcome && !QFile::copy(file, copy))
            qFatal("the file cannot be copied");
        m_imports.append([done, outcome = importOutcome] { done(outcome); });
    }
    void warmUp() override { ++warmUps; }

    void fail()
    {
        isPlaying = false;
        if (const auto failed = std::exchange(m_failed, {}))
            failed();
    }
    /// The first of those that are not done.
    void finishImport() { m_imports.takeFirst()(); }

    QList<Play> plays;
    bool isPlaying = false;
    int stops = 0;
    int warmUps = 0;
    QStringList imports;
    Result<void, SoundError> importOutcome;

private:
    std::function<void()> m_failed;
    QList<std::function<void()>> m_imports;
};

/// The sounds of an overlay, of which nothing is heard.
class RecordedSounds
{
public:
    RecordedSounds(Preferences &preferences, Clock &clock)
        : m_control(players),
          m_music(preferences, m_control),
          m_sounds(preferences, clock, player, m_music, folder.filePath(QStringLiteral("Kelp")))
    {
    }

    [[nodiscard]] OverlaySounds &sounds() { return m_sounds; }

    QTemporaryDir folder;
    FakeSoundPlayer player;
    FakeMusicPlayers players;

private:
    MusicControl m_control;
    OverlayMusic m_music;
    OverlaySounds m_sounds;
};

} // namespace kelp::test
