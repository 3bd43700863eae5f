#pragma once

#include <QStringList>

class QDBusMessage;

namespace kelp {

/// A music player on the session bus, by freedesktop.org's MPRIS 2.2.
/// What it says of itself may be anything.
struct MprisPlayer
{
    QString owner;        ///< its unique name on the bus
    QStringList names;    ///< what follows `namePrefix`; one player may have several
    QString desktopEntry; ///< empty where it did not tell
    bool isPlaying = false;

    static const QString namePrefix;
    /// The desktop entries that Spotify is installed under: by its maker, as a snap, as a flatpak.
    [[nodiscard]] static const QStringList &spotifyEntries();

    /// Without having asked it.
    [[nodiscard]] bool isNamedSpotify() const;
    [[nodiscard]] bool isSpotify() const;
    [[nodiscard]] bool isWebBrowser() const;

    /// Calls for `owner`.
    [[nodiscard]] QDBusMessage playerCall(const QString &method) const;
    [[nodiscard]] QDBusMessage propertyCall(const QString &interface, const QString &name) const;

    static const QString rootInterface;
    static const QString playerInterface;
};

} // namespace kelp
