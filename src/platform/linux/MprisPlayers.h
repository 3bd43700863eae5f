#pragma once

#include "platform/MusicPlayers.h"
#include "platform/linux/SpotifyPresence.h"

#include <QObject>

#include <memory>

namespace kelp {

class Clock;
class MprisPlayback;
struct MprisPlayer;

/// MusicPlayers over MPRIS on the session bus. A player is asked by its unique name and never started by being asked,
/// and all calls are asynchronous: a player that answers late or never holds up nothing but itself.
///
/// Spotify is the player whose name or desktop entry says so. The others are all those that say that they are playing,
/// web browsers aside: what plays in one may be the meeting.
class MprisPlayers final : public QObject, public MusicPlayers
{
    Q_OBJECT

public:
    /// `connection` is the name of Qt's connection to the session bus.
    MprisPlayers(const QString &connection, Clock &clock);
    ~MprisPlayers() override;

    void pauseSpotify() override;
    void pauseOthers() override;
    [[nodiscard]] bool spotifyInstalled() const override;

protected:
    void play(const QString &uri) override;

private:
    void pauseSoon();
    void pauseNow();
    void pause(const MprisPlayer &player);

    QString m_connection;
    Clock &m_clock;
    SpotifyPresence m_presence;
    // What is to be paused by the look around that begins in the next turn of the event loop.
    bool m_pausesSpotify = false;
    bool m_pausesOthers = false;
    int m_plays = 0; ///< how often Spotify was asked to play; what was to pause it before no longer does
    std::unique_ptr<MprisPlayback> m_playback;
};

} // namespace kelp
