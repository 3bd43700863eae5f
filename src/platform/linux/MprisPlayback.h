#pragma once

#include "platform/linux/MprisPlayer.h"

#include <QDBusConnection>
#include <QObject>

#include <optional>

namespace kelp {

class Clock;
class SpotifyPresence;

/// Makes Spotify play one item, once:
///
///     is it there? ── yes ────────────────────────────────────────────────> open ──> play
///                  └─ no: start it ──> its name appears ──> 2 s pass ───────┘
///
/// If the name appears while Kelp is still looking, it settles as well, but nothing has to be started.
///
/// Destroying this gives up, at whichever step.
class MprisPlayback final : public QObject
{
    Q_OBJECT

public:
    static constexpr double settling = 2;       ///< seconds from a player's appearance to its first request
    static constexpr double startPatience = 30; ///< seconds for a player to appear that was started

    MprisPlayback(const QDBusConnection &bus, Clock &clock, const SpotifyPresence &presence, const QString &uri);

    void start();

private Q_SLOTS:
    void nameOwnerChanged(const QString &name, const QString &oldOwner, const QString &newOwner);

private:
    enum class State { looking, starting, settling, over };

    void launch();
    void settle();
    void openIn(const MprisPlayer &player);

    QDBusConnection m_bus;
    Clock &m_clock;
    const SpotifyPresence &m_presence;
    QString m_uri;
    State m_state = State::looking;
    std::optional<MprisPlayer> m_arrived; ///< after the look around began
};

} // namespace kelp
