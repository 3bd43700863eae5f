#include "platform/linux/DBusSystemEvents.h"

#include "base/Logging.h"
#include "platform/linux/BusProbe.h"
#include "platform/linux/DetachedTask.h"

#include <QDBusConnection>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// NM_STATE_CONNECTED_SITE: from here on hosts beyond the local network can be reached.
/// https://networkmanager.dev/docs/api/latest/nm-dbus-types.html#NMState
constexpr uint connectedSite = 60;

constexpr double patience = 5; ///< seconds for the bus to answer

} // namespace

DBusSystemEvents::DBusSystemEvents(QObject *parent) : SystemEvents(parent)
{
    // Connecting blocks where the bus does not answer.
    runDetached<bool>(
        this,
        [] {
            return !busHangs(systemBusAddress(), patience) &&
                   QDBusConnection::connectToBus(QDBusConnection::SystemBus, u"kelp-system"_s).isConnected();
        },
        [this](bool connected) {
            if (!connected) {
                qCInfo(logPlatform) << "no system bus: no refresh on wake-up";
                return;
            }
            // No sender is named, because asking the bus for its owner would block. A forged signal causes no more
            // than a refresh.
            QDBusConnection bus(u"kelp-system"_s);
            bus.connect({}, u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s,
                        this, SLOT(onPrepareForSleep(bool)));
            bus.connect({}, u"/org/freedesktop/NetworkManager"_s, u"org.freedesktop.NetworkManager"_s,
                        u"StateChanged"_s, this, SLOT(onNetworkState(uint)));
        });
}

void DBusSystemEvents::onPrepareForSleep(bool goingDown)
{
    if (!goingDown)
        Q_EMIT wokeUp();
}

void DBusSystemEvents::onNetworkState(uint state)
{
    const bool hasNetwork = state >= connectedSite;
    if (hasNetwork && !m_hasNetwork)
        Q_EMIT networkReturned();
    m_hasNetwork = hasNetwork;
}

} // namespace kelp
