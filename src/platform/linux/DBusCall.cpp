#include "platform/linux/DBusCall.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

using namespace Qt::StringLiterals;

namespace kelp {

void callAsync(const QDBusConnection &bus, QDBusMessage call, QObject *context,
               std::function<void(const QDBusMessage &)> done)
{
    call.setAutoStartService(false);
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, dbusPatience), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [done = std::move(done)](QDBusPendingCallWatcher *finished) {
                         finished->deleteLater();
                         done(finished->reply());
                     });
}

QDBusMessage busCall(const QString &method)
{
    return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                          u"org.freedesktop.DBus"_s, method);
}

} // namespace kelp
