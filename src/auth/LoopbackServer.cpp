#include "auth/LoopbackServer.h"

#include "auth/LoopbackConnection.h"
#include "auth/RedirectRequest.h"
#include "base/Clock.h"

#include <QCoreApplication>

#include <algorithm>

namespace kelp {

LoopbackServer::LoopbackServer(Clock &clock, QString expectedState, QObject *parent)
    : QObject(parent), m_clock(clock), m_expectedState(std::move(expectedState))
{
    m_listener.setListenBacklogSize(512);
    m_listener.onConnection = [this](int descriptor) { accept(descriptor); };
}

LoopbackServer::~LoopbackServer()
{
    // Pages on their way are still delivered; those who have not asked for one get none.
    for (const QPointer<LoopbackConnection> &connection : m_connections) {
        if (connection && connection->isSilent())
            delete connection;
    }
}

Result<QString, AuthError> LoopbackServer::start()
{
    if (!m_listener.listen(QHostAddress::LocalHost, 0))
        return Failure(AuthError::fromTransport(m_listener.errorString(), false));
    return QStringLiteral("http://127.0.0.1:") + QString::number(m_listener.serverPort());
}

void LoopbackServer::waitForCode(QObject *context, std::function<void(const Outcome &)> callback)
{
    m_waiter = context;
    m_callback = std::move(callback);
    m_clock.after(timeOut, this, [this] { finish(Failure(AuthError{.kind = AuthError::Kind::timedOut})); });
    deliver();
}

void LoopbackServer::stop()
{
    finish(Failure(AuthError{.kind = AuthError::Kind::cancelled}));
}

void LoopbackServer::accept(int descriptor)
{
    makeRoom();
    auto *connection = new LoopbackConnection(descriptor, m_clock, QCoreApplication::instance());
    m_connections.append(connection);
    connection->setAnswer([server = QPointer(this)](const QByteArray &request) {
        return server ? server->answer(request) : QByteArray();
    });
}

void LoopbackServer::makeRoom()
{
    m_connections.removeIf([](const QPointer<LoopbackConnection> &connection) { return !connection; });
    while (m_connections.size() >= mostConnections) {
        // The oldest of those that have not spoken, else the oldest of all.
        const auto silent = std::find_if(m_connections.begin(), m_connections.end(),
                                         [](const auto &connection) { return connection->isSilent(); });
        const auto victim = silent == m_connections.end() ? m_connections.begin() : silent;
        delete *victim;
        m_connections.erase(victim);
    }
}

QByteArray LoopbackServer::answer(const QByteArray &request)
{
    const RedirectAnswer answer = answerRedirect(request, m_expectedState);
    if (answer.outcome)
        finish(*answer.outcome);
    return answer.response;
}

void LoopbackServer::finish(const Outcome &outcome)
{
    if (m_result)
        return;
    m_result = outcome;
    m_listener.close();
    deliver();
}

void LoopbackServer::deliver()
{
    if (!m_result || !m_callback || !m_waiter)
        return;
    // The callback may delete this server, which must not happen in the middle of one of its functions.
    QMetaObject::invokeMethod(
        m_waiter, [callback = std::exchange(m_callback, {}), result = *m_result] { callback(result); },
        Qt::QueuedConnection);
}

} // namespace kelp
