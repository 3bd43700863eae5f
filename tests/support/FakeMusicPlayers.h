#pragma once

#include "platform/MusicPlayers.h"

#include <QStringList>

namespace kelp::test {

/// Remembers what it was asked for, in order. Spotify is not installed unless a test says so.
class FakeMusicPlayers final : public MusicPlayers
{
public:
    void pauseSpotify() override { asked.append(QStringLiteral("pause Spotify")); }
    void pauseOthers() override { asked.append(QStringLiteral("pause others")); }
    [[nodiscard]] bool spotifyInstalled() const override { return installed; }

    QStringList asked;
    bool installed = false;

protected:
    void play(const QString &uri) override { asked.append(QStringLiteral("play ") + uri); }
};

} // namespace kelp::test
