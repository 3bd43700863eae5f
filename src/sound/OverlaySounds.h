#pragma once

#include "base/Result.h"
#include "sound/SoundError.h"

#include <QHash>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace kelp {

class Clock;
class OverlayMusic;
class Preferences;
class SoundBytes;
class SoundPlayer;
struct Sound;

/// Decides what is heard with an overlay, and lets the user bring a sound file of their own.
///
/// A choice is a string: "None", the name of a system sound or of a chime, "custom" (the user's own file) or "spotify".
/// What cannot be played is silence, but for the last two, which "Glass" stands in for.
class OverlaySounds final : public QObject
{
    Q_OBJECT

public:
    /// The system sounds on offer, in order.
    [[nodiscard]] static const QStringList &system();
    /// The chimes on offer, in order.
    [[nodiscard]] static const QStringList &chimes();

    /// `folder` is where the copy of the user's own sound is kept.
    OverlaySounds(Preferences &preferences, Clock &clock, SoundPlayer &player, OverlayMusic &music, QString folder);
    ~OverlaySounds() override;

    /// An overlay has appeared: pauses the user's music where they want that, and plays the sound that they chose.
    void playForOverlay();
    /// Stops what is playing and plays the choice `name`; nothing is as "None". Returns the number of this turn.
    quint64 play(const std::optional<QString> &name);
    /// Stops what is playing, the Spotify item that was started here included.
    void stop();
    /// Stops what is playing if that is still of this turn.
    void stopTurn(quint64 turn);

    /// Makes a copy of the sound file at `url` the user's own sound, which "customSoundPath" and "customSoundName" then
    /// tell of, in place of the one before. Where that fails, everything stays as it was. `done` is called later,
    /// unless `context` is destroyed before; the file is adopted all the same. A file that is still being copied when
    /// the next one comes is not adopted, and nothing more is heard of it.
    void setCustom(const QUrl &url, QObject *context, std::function<void(Result<void, SoundError>)> done);

private:
    using Done = std::function<void(Result<void, SoundError>)>;

    void start(const QString &name);
    void startCustom();
    void startNamed(const QString &name);
    void start(const Sound &sound, std::function<void()> failed = {});
    [[nodiscard]] std::shared_ptr<const SoundBytes> chime(const QString &name);
    [[nodiscard]] std::shared_ptr<const SoundBytes> ownSystemSound(const QString &name);
    [[nodiscard]] float volume() const;
    [[nodiscard]] Result<void, SoundError> replaceCustom(const QString &copy, const QString &original);

    Preferences &m_preferences;
    Clock &m_clock;
    SoundPlayer &m_player;
    OverlayMusic &m_music;
    QString m_folder;
    quint64 m_turn = 0;                                        ///< of the last play
    quint64 m_adoption = 0;                                    ///< the last one
    QHash<QString, std::shared_ptr<const SoundBytes>> m_cache; ///< by name, from the first play on
};

} // namespace kelp
