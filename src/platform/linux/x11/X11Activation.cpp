#include "platform/linux/x11/X11Activation.h"

#include <QGuiApplication>
#include <QWidget>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace kelp {

namespace {

struct Free
{
    void operator()(void *reply) const { std::free(reply); }
};

/// Says that the user has asked, as a pager does. A window manager that keeps applications from taking the keyboard for
/// themselves, which Qt's own request would look like, judges by the time of the last key or click in one of our
/// windows; but it was in another program that the user started Kelp again.
/// https://specifications.freedesktop.org/wm-spec/latest/ar01s03.html#id-1.4.10
constexpr std::uint32_t sourceUser = 2;

} // namespace

void activateX11Window(const QWidget &window)
{
    xcb_connection_t *connection = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    const QByteArray name("_NET_ACTIVE_WINDOW");
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> atom(xcb_intern_atom_reply(connection, cookie, nullptr));
    if (!atom)
        return;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = static_cast<xcb_window_t>(window.winId());
    event.type = atom->atom;
    event.data.data32[0] = sourceUser;
    event.data.data32[1] = XCB_CURRENT_TIME;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_send_event(connection, 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&event));
    xcb_flush(connection);
}

} // namespace kelp
