#include "platform/linux/MprisPlayers.h"

#include "base/Clock.h"
#include "platform/linux/DBusCall.h"
#include "platform/linux/MprisPlayback.h"
#include "platform/linux/MprisSurvey.h"

#include <QDBusMessage>

#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

MprisPlayers::MprisPlayers(const QString &connection, Clock &clock)
    : m_connection(connection), m_clock(clock), m_presence(connection)
{
}

MprisPlayers::~MprisPlayers() = default;

void MprisPlayers::pauseSpotify()
{
    m_playback.reset();
    m_pausesSpotify = true;
    pauseSoon();
}

void MprisPlayers::pauseOthers()
{
    m_pausesOthers = true;
    pauseSoon();
}

bool MprisPlayers::spotifyInstalled() const
{
    return QDBusConnection(m_connection).isConnected() && m_presence.isInstalled();
}

void MprisPlayers::play(const QString &uri)
{
    ++m_plays;
    m_pausesSpotify = false;
    const QDBusConnection bus(m_connection);
    if (!bus.isConnected())
        return;
    m_playback = std::make_unique<MprisPlayback>(bus, m_clock, m_presence, uri);
    m_playback->start();
}

/// In the next turn, so that what is asked for together is one look around, and whoever asks is not held up.
void MprisPlayers::pauseSoon()
{
    m_clock.after(0, this, [this] { pauseNow(); });
}

void MprisPlayers::pauseNow()
{
    const bool spotify = std::exchange(m_pausesSpotify, false);
    const bool others = std::exchange(m_pausesOthers, false);
    const QDBusConnection bus(m_connection);
    if ((!spotify && !others) || !bus.isConnected())
        return;
    auto *survey = new MprisSurvey(bus, this);
    connect(survey, &MprisSurvey::found, this, [this, spotify, others, plays = m_plays](const MprisPlayer &player) {
        if (player.isSpotify() ? spotify && plays == m_plays : others && player.isPlaying && !player.isWebBrowser())
            pause(player);
    });
    survey->start();
}

void MprisPlayers::pause(const MprisPlayer &player)
{
    callAsync(QDBusConnection(m_connection), player.playerCall(u"Pause"_s), this, [](const QDBusMessage &) {});
}

} // namespace kelp
