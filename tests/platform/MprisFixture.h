#pragma once

#include "platform/linux/MprisPlayers.h"
#include "support/EventLoopWatch.h"
#include "support/FakeClock.h"
#include "support/FakePlayer.h"
#include "support/PrivateBus.h"

#include <QTemporaryDir>

namespace kelp::test {

/// MprisPlayers on a bus of its own, with the applications that a test installs.
class MprisFixture
{
public:
    /// Once, before anything asks for applications: GLib remembers its folders. False where they cannot be made.
    [[nodiscard]] static bool useOwnFolders();
    static void installApplication(const QString &id, const QString &lines);
    static void uninstallApplications();
    /// A program that appends a line to the file `name` of the test's folder; its path.
    static QString installProgram(const QString &name);
    /// A service that the next bus can start.
    static void installService(const QString &name, const QString &program);
    /// How often that program has run.
    [[nodiscard]] static qsizetype starts(const QString &name);

    MprisFixture();
    ~MprisFixture();
    MprisFixture(const MprisFixture &) = delete;
    MprisFixture &operator=(const MprisFixture &) = delete;

    [[nodiscard]] bool isReady() const { return m_isReady; }
    FakePlayer &add(const QStringList &names, const FakePlayer::Character &character = {});
    /// Asks for a pause, and lets the event loop's turn come that carries it out.
    void pauseSpotify();
    void pauseOthers();
    void pauseAll();
    /// Returns when the bus and the players have got all that was sent so far.
    void settle();

    FakeClock clock;
    PrivateBus bus;
    std::unique_ptr<FakePlayers> fakes;
    std::unique_ptr<MprisPlayers> players;
    QString connection;

private:
    bool m_isReady = false;
};

} // namespace kelp::test
