#include "platform/linux/BusProbe.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

// GLib has members that are named as Qt's keywords are.
#undef signals
#include <gio/gio.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

struct Unref
{
    void operator()(void *object) const { g_object_unref(object); }
};
template<typename T>
using Owned = std::unique_ptr<T, Unref>;

/// Cancels what it watches over unless it is destroyed before the time is up.
class Watchdog
{
public:
    Watchdog(GCancellable *cancellable, double seconds)
        : m_thread([this, cancellable, seconds] {
              std::unique_lock lock(m_mutex);
              if (!m_ended.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return m_isOver; }))
                  g_cancellable_cancel(cancellable);
          })
    {
    }
    ~Watchdog()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_ended.notify_all();
        m_thread.join();
    }
    Q_DISABLE_COPY_MOVE(Watchdog)

private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_isOver = false;
    std::thread m_thread; ///< last, because it uses the others
};

} // namespace

bool busHangs(const QByteArray &address, double seconds)
{
    if (address.isEmpty())
        return false;
    const Owned<GCancellable> cancellable(g_cancellable_new());
    GError *error = nullptr;
    {
        const Watchdog watchdog(cancellable.get(), seconds);
        constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                                 G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        const Owned<GDBusConnection> connection(
            g_dbus_connection_new_for_address_sync(address.constData(), flags, nullptr, cancellable.get(), &error));
        if (connection)
            g_dbus_connection_close_sync(connection.get(), nullptr, nullptr);
    }
    g_clear_error(&error);
    return g_cancellable_is_cancelled(cancellable.get());
}

QByteArray sessionBusAddress()
{
    QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return address;
    const QString socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/bus"_s;
    return QFileInfo::exists(socket) ? "unix:path=" + QFile::encodeName(socket) : QByteArray();
}

QByteArray systemBusAddress()
{
    const QByteArray address = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address.isEmpty() ? "unix:path=/var/run/dbus/system_bus_socket" : address;
}

} // namespace kelp
