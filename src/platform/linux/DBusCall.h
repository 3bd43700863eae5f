#pragma once

#include <functional>

class QDBusConnection;
class QDBusMessage;
class QObject;
class QString;

namespace kelp {

constexpr int dbusPatience = 2000; ///< milliseconds that whoever is called over D-Bus has to answer

/// Sends `call` without waiting, and without starting whom it is for. `done` gets the answer, or an error when the
/// time is up, unless `context` is destroyed before.
void callAsync(const QDBusConnection &bus, QDBusMessage call, QObject *context,
               std::function<void(const QDBusMessage &)> done);

/// A call of a method of the bus itself.
[[nodiscard]] QDBusMessage busCall(const QString &method);

} // namespace kelp
