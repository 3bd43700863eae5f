#pragma once

namespace kelp::sandbox {

// The library that speaks HTTP keeps its sockets to itself; these find them among the process's descriptors by their
// ports.

/// The TCP connection between the loopback ports, or -1.
[[nodiscard]] int findConnection(int localPort, int remotePort);
/// Resets the connection at once, without an orderly end. The descriptor stays open.
void resetConnection(int localPort, int remotePort);
/// Whether the other side has closed its end.
[[nodiscard]] bool isAbandoned(int localPort, int remotePort);
/// Ends all connections of the port, so that whoever waits for one wakes up.
void shutDownConnections(int localPort);

} // namespace kelp::sandbox
