#include "platform/linux/x11/X11Screens.h"

#include "base/Logging.h"
#include "platform/linux/x11/X11Connection.h"

#include <QGuiApplication>
#include <QScreen>

#include <private/qhighdpiscaling_p.h>
#include <qpa/qplatformscreen.h>
#include <qpa/qwindowsysteminterface.h>

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <memory>
#include <utility>
#include <vector>

namespace kelp {

using x11::Reply;

X11Screens::X11Screens(xcb_connection_t *connection) : m_connection(connection)
{
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(connection, &xcb_randr_id);
    if (!extension || !extension->present)
        return;
    m_firstEvent = extension->first_event;
    qGuiApp->installNativeEventFilter(this); // Qt has asked the server for the events
}

bool X11Screens::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const int type = static_cast<const xcb_generic_event_t *>(message)->response_type & 0x7f;
    if (type == m_firstEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY || type == m_firstEvent + XCB_RANDR_NOTIFY)
        compareSoon();
    return false;
}

/// Once for all events that are waiting, and after Qt has handled them.
void X11Screens::compareSoon()
{
    if (!std::exchange(m_isComparing, true))
        QMetaObject::invokeMethod(
            this, [this] { compare(); }, Qt::QueuedConnection);
}

void X11Screens::compare()
{
    m_isComparing = false;
    const QHash<QString, QRect> actual = monitors();
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (QScreen *screen : screens) {
        const QRect monitor = actual.value(screen->name());
        if (monitor.isEmpty() || QHighDpi::fromNativeScreenGeometry(monitor, screen) == screen->geometry())
            continue;
        qCDebug(logPlatform) << "screen" << screen->name() << "has moved to" << monitor;
        const QRect free = screen->handle()->availableGeometry() & monitor;
        QWindowSystemInterface::handleScreenGeometryChange(screen, monitor, free.isEmpty() ? monitor : free);
    }
}

/// The places of the monitors by name, in pixels; none on a server that knows no monitors, where Qt does not either.
QHash<QString, QRect> X11Screens::monitors() const
{
    const xcb_window_t root = x11::firstScreen(m_connection).root;
    const Reply<xcb_randr_get_monitors_reply_t> reply(
        xcb_randr_get_monitors_reply(m_connection, xcb_randr_get_monitors(m_connection, root, 1), nullptr));
    if (!reply)
        return {};
    std::vector<std::pair<xcb_get_atom_name_cookie_t, QRect>> asked;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem != 0;
         xcb_randr_monitor_info_next(&each)) {
        const xcb_randr_monitor_info_t &monitor = *each.data;
        asked.emplace_back(xcb_get_atom_name(m_connection, monitor.name),
                           QRect(monitor.x, monitor.y, monitor.width, monitor.height));
    }
    QHash<QString, QRect> places;
    for (const auto &[cookie, place] : asked) {
        const Reply<xcb_get_atom_name_reply_t> name(xcb_get_atom_name_reply(m_connection, cookie, nullptr));
        if (name)
            places.insert(
                QString::fromUtf8(xcb_get_atom_name_name(name.get()), xcb_get_atom_name_name_length(name.get())),
                place);
    }
    return places;
}

} // namespace kelp
