#include "platform/linux/SpotifyPresence.h"

#include "platform/linux/DBusCall.h"
#include "platform/linux/DesktopApplications.h"
#include "platform/linux/MprisPlayer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kelp {

SpotifyPresence::SpotifyPresence(const QString &connection, QObject *parent) : QObject(parent)
{
    const QDBusConnection bus(connection);
    if (!bus.isConnected())
        return;
    // Before it is asked for, so that no change goes unseen between the two.
    auto *watcher = new QDBusServiceWatcher(busName(), bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &owner) { m_isRunning = !owner.isEmpty(); });
    callAsync(bus, busCall(u"NameHasOwner"_s) << busName(), this, [this](const QDBusMessage &answer) {
        if (!m_isRunning) // a change that was told of meanwhile is newer; Qt may hand out an answer after it
            m_isRunning = answer.arguments().value(0).toBool();
    });
    callAsync(bus, busCall(u"ListActivatableNames"_s), this, [this](const QDBusMessage &answer) {
        m_isActivatable = answer.arguments().value(0).toStringList().contains(busName());
    });
}

bool SpotifyPresence::isInstalled() const
{
    return m_isRunning.value_or(false) || m_isActivatable || !desktopEntry().isEmpty();
}

QString SpotifyPresence::desktopEntry()
{
    const QStringList &entries = MprisPlayer::spotifyEntries();
    const auto found = std::find_if(entries.begin(), entries.end(), desktopApplications::isInstalled);
    return found == entries.end() ? QString() : *found;
}

const QString &SpotifyPresence::busName()
{
    static const QString name = MprisPlayer::namePrefix + u"spotify"_s;
    return name;
}

} // namespace kelp
