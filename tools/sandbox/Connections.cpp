#include "Connections.h"

#include <QDir>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

/// The port of the near end (getsockname) or of the far end (getpeername), or 0 where there is none.
template<typename Name>
int portOf(int descriptor, Name name)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (name(descriptor, reinterpret_cast<sockaddr *>(&address), &size) != 0 || address.sin_family != AF_INET)
        return 0;
    return ntohs(address.sin_port);
}

QList<int> connectionsOf(int localPort)
{
    QList<int> found;
    for (const QString &entry :
         QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        const int descriptor = entry.toInt();
        if (portOf(descriptor, getsockname) == localPort && portOf(descriptor, getpeername) != 0)
            found.append(descriptor);
    }
    return found;
}

} // namespace

int findConnection(int localPort, int remotePort)
{
    for (const int descriptor : connectionsOf(localPort)) {
        if (portOf(descriptor, getpeername) == remotePort)
            return descriptor;
    }
    return -1;
}

void resetConnection(int localPort, int remotePort)
{
    const int descriptor = findConnection(localPort, remotePort);
    if (descriptor < 0)
        return;
    // Dissolving the association of a connected TCP socket sends RST; closing it with SO_LINGER 0 would come too late,
    // after the library's orderly shutdown().
    sockaddr nowhere{};
    nowhere.sa_family = AF_UNSPEC;
    ::connect(descriptor, &nowhere, sizeof nowhere);
}

bool isAbandoned(int localPort, int remotePort)
{
    pollfd descriptor{findConnection(localPort, remotePort), POLLRDHUP, 0};
    if (descriptor.fd < 0)
        return true;
    return ::poll(&descriptor, 1, 0) > 0 && (descriptor.revents & (POLLRDHUP | POLLHUP | POLLERR)) != 0;
}

void shutDownConnections(int localPort)
{
    for (const int descriptor : connectionsOf(localPort))
        ::shutdown(descriptor, SHUT_RDWR);
}

} // namespace kelp::sandbox
