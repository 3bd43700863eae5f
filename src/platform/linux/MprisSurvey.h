#pragma once

#include "platform/linux/MprisPlayer.h"

#include <QBasicTimer>
#include <QDBusConnection>
#include <QHash>
#include <QObject>

#include <functional>
#include <queue>

namespace kelp {

/// One look at the players on the bus:
///
///     names of the bus ──> who owns each player's name ──> what each owner says of itself ──> found, …, finished
///
/// Each owner is asked once, however many names it has, and all at the same time, so that one that never answers keeps
/// nobody waiting but itself. The calls go out a few per turn of the event loop, because there may be any number.
class MprisSurvey final : public QObject
{
    Q_OBJECT

public:
    static constexpr int mostNames = 1000; ///< of players that are looked at; no desktop has as many
    static constexpr int callsPerTurn = 16;

    explicit MprisSurvey(const QDBusConnection &bus, QObject *parent = nullptr);

    void start();

Q_SIGNALS:
    /// There is this player. One that is named Spotify is not asked anything; any other has told what it is, or let
    /// its 2 s pass.
    void found(const kelp::MprisPlayer &player);
    /// That were all; or the bus does not answer, and nothing is known.
    void finished(bool isKnown);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void take(const QStringList &names);
    void findOwner(const QString &name);
    void takeOwner(const QString &name, const QString &owner);
    void askPlayers();
    void ask(const QString &owner);
    void answered(const QString &owner, int &missing);

    void later(std::function<void()> step);
    void end(bool isKnown);

    QDBusConnection m_bus;
    QHash<QString, MprisPlayer> m_players; ///< by owner
    qsizetype m_unowned = 0;               ///< names whose owner is not known yet
    qsizetype m_unfinished = 0;            ///< players that have not been announced yet
    std::queue<std::function<void()>> m_steps;
    QBasicTimer m_turn;
};

} // namespace kelp
