#pragma once

#include "base/Result.h"
#include "sound/SoundError.h"

#include <QString>

#include <functional>
#include <memory>

class QObject;

namespace kelp {

class SoundBytes;

/// What can be played: one of the three, or a name with bytes for where no sound has that name.
struct Sound
{
    QString file;                            ///< path; empty for none
    std::shared_ptr<const SoundBytes> bytes; ///< a WAV file; null for none
    QString name;                            ///< of a sound in the desktop's sound themes; empty for none
};

/// Plays one sound at a time. Nothing here waits.
class SoundPlayer
{
public:
    virtual ~SoundPlayer() = default;

    /// Stops what is playing and plays `sound` once. `failed` is called, later, where nothing can be made of it and
    /// nothing else was asked for meanwhile. Where there is nothing to play on, it is not called: nothing else would be
    /// heard either.
    virtual void play(const Sound &sound, float volume, std::function<void()> failed) = 0;
    virtual void stop() = 0;

    /// Copies `file` to the new file `copy`, for the user alone, if it can be played; on failure there is no copy.
    /// `done` is called unless `context` is destroyed before.
    virtual void import(const QString &file, const QString &copy, QObject *context,
                        std::function<void(Result<void, SoundError>)> done) = 0;
    /// Makes the first sound come sooner.
    virtual void warmUp() = 0;
};

} // namespace kelp
