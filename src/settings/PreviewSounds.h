#pragma once

#include "base/Result.h"

#include <QString>

#include <functional>

class QObject;

namespace kelp {

/// What the choice of a sound needs: to hear it, and to take one in.
struct PreviewSounds
{
    /// Plays a value of the preference "sound"; what is playing stops before.
    std::function<void(const QString &choice)> play;
    std::function<void()> stop;
    /// Makes a file the user's own sound, and then calls `done` with nothing or with why not, unless `context` is
    /// destroyed before.
    std::function<void(const QString &path, QObject *context, std::function<void(Result<void, QString>)> done)> adopt;
    std::function<bool()> isSpotifyInstalled;
};

} // namespace kelp
