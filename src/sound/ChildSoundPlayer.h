#pragma once

#include "sound/SoundChild.h"
#include "sound/SoundPlayer.h"

#include <QObject>

namespace kelp {

/// Plays with kelp-sound: a short-lived process for each sound, so that neither the memory that decoding takes nor a
/// decoder that crashes or hangs is Kelp's affair. The end of the process is the end of the sound.
class ChildSoundPlayer final : public QObject, public SoundPlayer
{
    Q_OBJECT

public:
    /// The program that belongs to this build of Kelp, beside it or where packages put it.
    [[nodiscard]] static QString usualProgram();

    explicit ChildSoundPlayer(Clock &clock, QString program = usualProgram(), SoundChild::Patience playing = {},
                              SoundChild::Patience importing = {30, 600});
    ~ChildSoundPlayer() override;

    void play(const Sound &sound, float volume, std::function<void()> failed) override;
    void stop() override;
    void import(const QString &file, const QString &copy, QObject *context,
                std::function<void(Result<void, SoundError>)> done) override;
    void warmUp() override;

Q_SIGNALS:
    /// The first of a sound can be heard.
    void started();
    /// The sound is over, or is known not to be heard.
    void finished();

private:
    void endOfPlay(std::optional<ChildStatus> status, const std::function<void()> &failed);

    Clock &m_clock;
    QString m_program;
    SoundChild::Patience m_patienceToPlay;
    SoundChild::Patience m_patienceToImport;
    std::unique_ptr<SoundChild> m_playing;
};

} // namespace kelp
