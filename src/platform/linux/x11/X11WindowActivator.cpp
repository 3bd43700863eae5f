#include "platform/linux/x11/X11WindowActivator.h"

#include <QGuiApplication>
#include <QWidget>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace kelp {

namespace {

constexpr std::uint32_t sourcePager = 2; ///< EWMH: the request comes from the user

xcb_atom_t atom(xcb_connection_t *connection, const char *name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

xcb_connection_t *connectionToServer()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

} // namespace

void X11WindowActivator::activate(QWidget &window, const QString &)
{
    window.show();
    window.raise();
    window.activateWindow();

    xcb_connection_t *connection = connectionToServer();
    xcb_client_message_event_t request{};
    request.response_type = XCB_CLIENT_MESSAGE;
    request.format = 32;
    request.window = static_cast<xcb_window_t>(window.winId());
    request.type = atom(connection, "_NET_ACTIVE_WINDOW");
    request.data.data32[0] = sourcePager;
    xcb_send_event(connection, 0, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&request));
    xcb_flush(connection);
}

bool X11WindowActivator::isActive(const QWidget &window) const
{
    // Qt waits for 400 ms before it takes notice of a lost focus; the server knows at once.
    xcb_connection_t *connection = connectionToServer();
    const std::unique_ptr<xcb_get_input_focus_reply_t, decltype(&std::free)> reply(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr), &std::free);
    return window.isVisible() && reply && reply->focus == window.winId();
}

} // namespace kelp
