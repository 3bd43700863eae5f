#pragma once

#include "base/Result.h"

#include <QString>

#include <functional>

class QObject;

namespace kelp {

/// What the choice of a sound needs: to hear it, and to take one in.
struct PreviewSounds
{
    /// Plays a value of the preference "sound"; what is playing stops before. Returns the number of this turn.
    std::function<quint64(const QString &choice)> play;
    /// Stops whatever is playing.
    std::function<void()> stop;
    /// Stops what was played in that turn, and nothing that took its place, as the sound of a reminder.
    std::function<void(quint64 turn)> stopTurn;
    /// Makes a file the user's own sound, and then calls `done` with nothing or with why not, unless `context` is
    /// destroyed or another file is adopted before.
    std::function<void(const QString &path, QObject *context, std::function<void(Result<void, QString>)> done)> adopt;
    std::function<bool()> isSpotifyInstalled;
};

} // namespace kelp
