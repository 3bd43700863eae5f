#include "platform/linux/MprisPlayback.h"

#include "base/Clock.h"
#include "base/Logging.h"
#include "platform/linux/DBusCall.h"
#include "platform/linux/DesktopApplications.h"
#include "platform/linux/MprisSurvey.h"
#include "platform/linux/SpotifyPresence.h"

#include <QDBusMessage>

using namespace Qt::StringLiterals;

namespace kelp {

MprisPlayback::MprisPlayback(const QDBusConnection &bus, Clock &clock, const SpotifyPresence &presence,
                             const QString &uri)
    : m_bus(bus), m_clock(clock), m_presence(presence), m_uri(uri)
{
}

void MprisPlayback::start()
{
    // From the beginning, because it may appear while others still have to be asked. All names, because a player may
    // add its instance to its name.
    const QDBusMessage bus = busCall({});
    m_bus.connect(bus.service(), bus.path(), bus.interface(), u"NameOwnerChanged"_s, this,
                  SLOT(nameOwnerChanged(QString, QString, QString)));
    auto *survey = new MprisSurvey(m_bus, this);
    connect(survey, &MprisSurvey::found, this, [this](const MprisPlayer &player) {
        if (m_state == State::looking && player.isSpotify())
            openIn(player);
    });
    connect(survey, &MprisSurvey::finished, this, [this](bool isKnown) {
        if (m_state != State::looking || !isKnown)
            return;
        if (m_arrived)
            settle();
        else
            launch();
    });
    survey->start();
}

void MprisPlayback::launch()
{
    m_state = State::starting;
    if (const QString entry = SpotifyPresence::desktopEntry(); !entry.isEmpty())
        desktopApplications::launch(entry);
    else if (m_presence.isActivatable())
        callAsync(m_bus, busCall(u"StartServiceByName"_s) << SpotifyPresence::busName() << 0U, this,
                  [](const auto &) {});
    m_clock.after(startPatience, this, [this] {
        if (m_state != State::starting)
            return;
        qCInfo(logPlatform) << "Spotify was started but does not appear";
        m_state = State::over;
    });
}

void MprisPlayback::nameOwnerChanged(const QString &name, const QString &, const QString &newOwner)
{
    if (!name.startsWith(MprisPlayer::namePrefix))
        return;
    const MprisPlayer player{.owner = newOwner, .names = {name.mid(MprisPlayer::namePrefix.size())}};
    if (!player.isNamedSpotify())
        return;
    if (m_state == State::looking) { // who is there may still be among those that are found
        m_arrived = newOwner.isEmpty() ? std::nullopt : std::optional(player);
    } else if (m_state == State::starting && !newOwner.isEmpty()) {
        m_arrived = player;
        settle();
    }
}

void MprisPlayback::settle()
{
    m_state = State::settling;
    m_clock.after(settling, this, [this] { openIn(*m_arrived); });
}

void MprisPlayback::openIn(const MprisPlayer &player)
{
    m_state = State::over;
    // Some players open an item without playing it.
    callAsync(m_bus, player.playerCall(u"OpenUri"_s) << m_uri, this, [this, player](const QDBusMessage &) {
        callAsync(m_bus, player.playerCall(u"Play"_s), this, [](const QDBusMessage &) {});
    });
}

} // namespace kelp
