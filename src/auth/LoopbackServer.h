#pragma once

#include "auth/AuthError.h"
#include "base/Result.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>

#include <functional>
#include <optional>

namespace kelp {

class Clock;
class LoopbackConnection;

/// The HTTP server on 127.0.0.1 that receives the browser's redirect at the end of Google's consent page. One per
/// sign-in attempt; it completes exactly once, with the authorization code or an error, and then listens no more.
///
///     start → (connection → one read → page)* → completed
///
/// Anybody on this computer can connect. A request without the expected state changes nothing, at most 32
/// connections are open, and the oldest idle one gives way to a new one, so that neither a flood nor a client that
/// never speaks keeps the true redirect out.
class LoopbackServer : public QObject
{
    Q_OBJECT

public:
    using Outcome = Result<QString, AuthError>;

    static constexpr double timeOut = 300; ///< seconds from `waitForCode` on
    static constexpr qsizetype mostConnections = 32;

    LoopbackServer(Clock &clock, QString expectedState, QObject *parent = nullptr);
    ~LoopbackServer() override;

    /// Opens the listener on a free port and returns the redirect URI, "http://127.0.0.1:" and the port.
    [[nodiscard]] Result<QString, AuthError> start();
    /// Calls back with the code or the error once there is one, also where it arrived before. Never before this
    /// function has returned, and not at all once `context` is destroyed.
    void waitForCode(QObject *context, std::function<void(const Outcome &)> callback);
    /// Completes with a cancellation, unless it has completed already.
    void stop();

private:
    /// Hands on the sockets themselves.
    class Listener : public QTcpServer
    {
    public:
        std::function<void(int descriptor)> onConnection;

    protected:
        void incomingConnection(qintptr descriptor) override { onConnection(static_cast<int>(descriptor)); }
    };

    void accept(int descriptor);
    void makeRoom();
    [[nodiscard]] QByteArray answer(const QByteArray &request);
    void finish(const Outcome &outcome);
    void deliver();

    Clock &m_clock;
    QString m_expectedState;
    Listener m_listener;
    QList<QPointer<LoopbackConnection>> m_connections; ///< oldest first; those that are closed are null
    std::optional<Outcome> m_result;
    QPointer<QObject> m_waiter;
    std::function<void(const Outcome &)> m_callback;
};

} // namespace kelp
