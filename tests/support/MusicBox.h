#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace kelp::test {

/// Real music players on a session bus, which play a tone that nobody hears. Players refuse to be root, and are not.
/// They end with this object.
class MusicBox
{
public:
    MusicBox() = default;
    ~MusicBox();
    MusicBox(const MusicBox &) = delete;
    MusicBox &operator=(const MusicBox &) = delete;

    /// Prepares a home for players on the bus at `address`.
    [[nodiscard]] bool open(const QString &address);

    enum class Begins { Playing, Paused };
    void startVlc(Begins begins);
    void startMpv(Begins begins);

    /// The status of each player's name on the bus as an independent program reads it: "mpv Playing". Where several
    /// have a name, each but the first adds something to it. VLC always takes two, "vlc" and "vlc.instance1234".
    [[nodiscard]] QStringList statuses() const;

private:
    void startPlayer(const QString &program, const QStringList &arguments);

    QTemporaryDir m_home;
    QString m_tone;
    QProcessEnvironment m_environment;
    std::vector<std::unique_ptr<QProcess>> m_players;
};

} // namespace kelp::test
