#pragma once

#include <QString>

namespace kelp {

/// The music players that the user has. Nothing here waits, reports a failure or tries again: what a player does with
/// what it is asked is its own affair.
class MusicPlayers
{
public:
    virtual ~MusicPlayers() = default;

    /// Pauses Spotify where it runs, and gives up starting what `playSpotify` was asked for last. Never starts it.
    virtual void pauseSpotify() = 0;
    /// Pauses every other music player that is playing.
    virtual void pauseOthers() = 0;
    /// Whether Spotify can be asked to play, running or not.
    [[nodiscard]] virtual bool spotifyInstalled() const = 0;
    /// Plays what the URI names, in `playableUri`'s form. Spotify is started where it does not run, and asked once it
    /// has come up.
    void playSpotify(const QString &uri) { play(playableUri(uri)); }

    /// What of `uri` may reach a player: letters, numbers and ":". No quote, backslash or line break of a preference
    /// that somebody wrote by hand gets into a script or onto a command line.
    [[nodiscard]] static QString playableUri(const QString &uri);

protected:
    virtual void play(const QString &uri) = 0;
};

} // namespace kelp
