#pragma once

#include <QObject>

#include <optional>

namespace kelp {

/// Whether Spotify is here to be played on: as a desktop entry, as a service that the bus can start, or as a player
/// that runs without either.
class SpotifyPresence final : public QObject
{
    Q_OBJECT

public:
    /// `connection` is the name of Qt's connection to the session bus. The bus is asked in passing; until it answers,
    /// the desktop entries alone decide.
    explicit SpotifyPresence(const QString &connection, QObject *parent = nullptr);

    [[nodiscard]] bool isInstalled() const;

    /// The desktop entry that starts it; empty without one.
    [[nodiscard]] static QString desktopEntry();
    /// Whether the bus can start it. A service that is installed later counts from Kelp's next start on.
    [[nodiscard]] bool isActivatable() const { return m_isActivatable; }
    /// The name on the bus by which it runs, and is started.
    [[nodiscard]] static const QString &busName();

private:
    bool m_isActivatable = false;
    std::optional<bool> m_isRunning; ///< nothing until the bus has told
};

} // namespace kelp
