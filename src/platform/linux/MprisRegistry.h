#pragma once

#include "platform/linux/SpotifyPresence.h"
#include "platform/mac/ApplicationRegistry.h"

namespace kelp {

struct MprisPlayer;

/// The registry for scripts on a desktop without one: Spotify runs where its player is on the session bus, and the
/// user's other music player where any other, no web browser, is playing.
class MprisRegistry final : public ApplicationRegistry
{
public:
    /// `connection` is the name of Qt's connection to the session bus.
    explicit MprisRegistry(const QString &connection);

    void ifRunning(const QString &bundle, QObject *context, std::function<void()> action) override;
    [[nodiscard]] bool isInstalled(const QString &bundle) const override;

private:
    QString m_connection;
    SpotifyPresence m_spotify;
};

} // namespace kelp
