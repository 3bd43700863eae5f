#pragma once

class QByteArray;

namespace kelp {

/// Whether something accepts connections at the D-Bus address but does not answer within `seconds`. Qt would wait
/// for it for over a minute, in whichever thread asks first, and every other use of D-Bus with it. Blocks for `seconds`
/// at most; a bus that answers, or that is not there, takes a few milliseconds.
[[nodiscard]] bool busHangs(const QByteArray &address, double seconds);

/// The address of the session bus; empty where there is none yet.
[[nodiscard]] QByteArray sessionBusAddress();
[[nodiscard]] QByteArray systemBusAddress();

} // namespace kelp
