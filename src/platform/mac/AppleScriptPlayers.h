#pragma once

#include "platform/MusicPlayers.h"

#include <QObject>

#include <memory>

namespace kelp {

class ApplicationRegistry;

/// MusicPlayers by AppleScript: each request is a script that the system's script runner gets in a process of its own,
/// which nobody waits for. Requests may overlap, and what the runner says is discarded.
class AppleScriptPlayers final : public MusicPlayers
{
public:
    static const QString systemRunner; ///< the script runner's path

    explicit AppleScriptPlayers(std::unique_ptr<ApplicationRegistry> applications,
                                const QString &runner = systemRunner);
    ~AppleScriptPlayers() override;

    void pauseSpotify() override;
    void pauseOthers() override;
    [[nodiscard]] bool spotifyInstalled() const override;

protected:
    void play(const QString &uri) override;

private:
    void pauseIfRunning(const QString &bundle);
    void run(const QString &script);

    std::unique_ptr<ApplicationRegistry> m_applications;
    QString m_runner;
    QObject m_context; ///< no answer of the registry arrives after this has gone
};

} // namespace kelp
