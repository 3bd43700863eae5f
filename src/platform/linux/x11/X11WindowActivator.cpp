#include "platform/linux/x11/X11WindowActivator.h"

#include "platform/linux/x11/X11Connection.h"

#include <QGuiApplication>
#include <QWidget>

#include <xcb/xcb.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

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

void X11WindowActivator::keepOutOfLists(QWidget &window)
{
    m_unlisted.insert(&window);
}

/// The window manager forgets the wish whenever the window is hidden, and Qt leaves it as it is.
void X11WindowActivator::tellLists(QWidget &window) const
{
    xcb_connection_t *connection = connectionToServer();
    const std::array states{atom(connection, "_NET_WM_STATE_SKIP_TASKBAR"),
                            atom(connection, "_NET_WM_STATE_SKIP_PAGER")};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        atom(connection, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32, states.size(), states.data());
}

void X11WindowActivator::activate(QWidget &window, const QString &)
{
    if (!window.isVisible() && m_unlisted.contains(&window))
        tellLists(window);
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
    xcb_send_event(connection, 0, x11::firstScreen(connection).root,
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

void X11WindowActivator::whenLeft(QWidget &window, std::function<void()> action)
{
    m_watched = &window;
    m_left = std::move(action);
    qGuiApp->installNativeEventFilter(this);
}

bool X11WindowActivator::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto &event = *static_cast<const xcb_generic_event_t *>(message);
    if ((event.response_type & 0x7f) != XCB_FOCUS_OUT || !m_watched)
        return false;
    const auto &left = reinterpret_cast<const xcb_focus_out_event_t &>(event);
    // While somebody grabs the keyboard, as window managers do for a moment, the window keeps it.
    const bool isGrab = left.mode == XCB_NOTIFY_MODE_GRAB || left.mode == XCB_NOTIFY_MODE_UNGRAB;
    const bool staysInside = left.detail == XCB_NOTIFY_DETAIL_INFERIOR || left.detail == XCB_NOTIFY_DETAIL_POINTER;
    if (left.event == m_watched->internalWinId() && !isGrab && !staysInside)
        m_left();
    return false;
}

} // namespace kelp
