#pragma once

#include <QString>

#include <optional>

namespace kelp {

class MusicPlayers;

/// Silences the user's music, and plays an item of Spotify's. Nothing fails visibly, and nothing waits.
class MusicControl
{
public:
    /// `players` has to outlive this.
    explicit MusicControl(MusicPlayers &players) : m_players(players) {}

    /// Where Spotify runs.
    void pauseSpotify();
    /// All of the user's players: Spotify, unless it is skipped, and every other that is playing.
    void pauseAll(bool skipSpotify);
    [[nodiscard]] bool spotifyInstalled() const;
    /// Plays what `spotifyURI` returned.
    void playSpotify(const QString &uri);

    /// The URI, "spotify:" kind ":" identifier, of a share link or of a URI that somebody pasted; nothing where the
    /// text is neither, or names something that cannot be played.
    [[nodiscard]] static std::optional<QString> spotifyURI(const QString &text);

private:
    MusicPlayers &m_players;
};

} // namespace kelp
