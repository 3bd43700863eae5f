#include "auth/LoopbackConnection.h"

#include "base/Clock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace kelp {

namespace {

bool wouldBlock()
{
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

} // namespace

LoopbackConnection::LoopbackConnection(int descriptor, Clock &clock, QObject *parent)
    : QObject(parent),
      m_clock(clock),
      m_descriptor(descriptor),
      m_readable(descriptor, QSocketNotifier::Read),
      m_writable(descriptor, QSocketNotifier::Write)
{
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    m_writable.setEnabled(false);
    connect(&m_readable, &QSocketNotifier::activated, this, &LoopbackConnection::read);
    connect(&m_writable, &QSocketNotifier::activated, this, &LoopbackConnection::write);
}

LoopbackConnection::~LoopbackConnection()
{
    m_readable.setEnabled(false);
    m_writable.setEnabled(false);
    ::close(m_descriptor);
}

void LoopbackConnection::read()
{
    QByteArray bytes(largestRequest, Qt::Uninitialized);
    const ssize_t count = ::recv(m_descriptor, bytes.data(), static_cast<size_t>(bytes.size()), 0);
    if (count < 0 && wouldBlock())
        return;
    if (count < 0 || (count == 0 && m_answered)) {
        // The client is done, or gone. What is still unsent has nobody to read it.
        m_readable.setEnabled(false);
        if (count < 0 || m_unsent.isEmpty())
            deleteLater();
        return;
    }
    // Whatever comes after the answer is read and dropped: closing with unread bytes would reset the connection and
    // could take the page away from the client.
    if (m_answered)
        return;
    m_answered = true;
    bytes.truncate(count);
    m_unsent = m_answer ? m_answer(bytes) : QByteArray();
    m_clock.after(lingering, this, [this] { deleteLater(); });
    write();
}

void LoopbackConnection::write()
{
    while (!m_unsent.isEmpty()) {
        const ssize_t count =
            ::send(m_descriptor, m_unsent.constData(), static_cast<size_t>(m_unsent.size()), MSG_NOSIGNAL);
        if (count < 0 && wouldBlock()) {
            m_writable.setEnabled(true);
            return;
        }
        if (count < 0) {
            deleteLater();
            return;
        }
        m_unsent.remove(0, count);
    }
    m_writable.setEnabled(false);
    ::shutdown(m_descriptor, SHUT_WR);
    if (!m_readable.isEnabled())
        deleteLater();
}

} // namespace kelp
