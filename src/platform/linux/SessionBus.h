#pragma once

#include "platform/linux/BusProbe.h"

#include <QDBusConnection>

namespace kelp {

/// The name of Qt's connection to the session bus that all of Kelp shares. Where there is no bus, or none that answers,
/// there is no connection of this name.
inline const QString sessionConnection = QStringLiteral("kelp-session");

/// Makes that connection, or gives it once it is made. The first call connects, which blocks where the bus does not
/// answer: only on a thread that nobody waits for.
[[nodiscard]] inline QDBusConnection connectToSessionBus()
{
    const QByteArray address = sessionBusAddress();
    return address.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, sessionConnection)
                             : QDBusConnection::connectToBus(QString::fromUtf8(address), sessionConnection);
}

} // namespace kelp
