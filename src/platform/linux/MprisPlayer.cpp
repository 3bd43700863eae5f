#include "platform/linux/MprisPlayer.h"

#include "platform/linux/DesktopApplications.h"

#include <QDBusMessage>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString objectPath = u"/org/mpris/MediaPlayer2"_s;

/// A player's name without what tells its instances apart: "firefox" of "firefox.instance_1_23".
QString kindOf(const QString &name)
{
    return name.section(u'.', 0, 0).toLower();
}

/// How browsers call themselves that do not tell their desktop entry, or run where it is not installed.
bool isBrowserName(const QString &kind)
{
    static const QStringList names{u"brave"_s,
                                   u"chrome"_s,
                                   u"chromium"_s,
                                   u"edge"_s,
                                   u"epiphany"_s,
                                   u"falkon"_s,
                                   u"firefox"_s,
                                   u"konqueror"_s,
                                   u"librewolf"_s,
                                   u"microsoft-edge"_s,
                                   u"msedge"_s,
                                   u"opera"_s,
                                   u"plasma-browser-integration"_s,
                                   u"qutebrowser"_s,
                                   u"vivaldi"_s};
    return names.contains(kind);
}

} // namespace

const QString MprisPlayer::namePrefix = u"org.mpris.MediaPlayer2."_s;
const QString MprisPlayer::rootInterface = u"org.mpris.MediaPlayer2"_s;
const QString MprisPlayer::playerInterface = u"org.mpris.MediaPlayer2.Player"_s;

const QStringList &MprisPlayer::spotifyEntries()
{
    static const QStringList entries{u"spotify"_s, u"spotify_spotify"_s, u"com.spotify.Client"_s};
    return entries;
}

bool MprisPlayer::isNamedSpotify() const
{
    return std::any_of(names.begin(), names.end(), [](const QString &name) { return kindOf(name) == "spotify"_L1; });
}

bool MprisPlayer::isSpotify() const
{
    return isNamedSpotify() || spotifyEntries().contains(desktopEntry, Qt::CaseInsensitive);
}

bool MprisPlayer::isWebBrowser() const
{
    if (!desktopEntry.isEmpty() && desktopApplications::isWebBrowser(desktopEntry))
        return true;
    return std::any_of(names.begin(), names.end(), [](const QString &name) {
        const QString kind = kindOf(name);
        return isBrowserName(kind) || desktopApplications::isWebBrowser(kind);
    });
}

QDBusMessage MprisPlayer::playerCall(const QString &method) const
{
    return QDBusMessage::createMethodCall(owner, objectPath, playerInterface, method);
}

QDBusMessage MprisPlayer::propertyCall(const QString &interface, const QString &name) const
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(owner, objectPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    call << interface << name;
    return call;
}

} // namespace kelp
