#include "platform/linux/x11/X11ScreenCover.h"

#include "base/Logging.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Grab.h"

#include <QBackingStore>
#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <xcb/xcb.h>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace kelp {

using x11::Reply;

namespace {

/// Long enough for a change of focus between two of our own windows to be over.
constexpr auto takeBackDelay = 60ms;

xcb_connection_t *connection()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

/// In the server's pixels. Qt leaves a screen's corner where the server has it and scales its size.
QRect nativeGeometry(const QScreen &screen)
{
    return {screen.geometry().topLeft(), (QSizeF(screen.size()) * screen.devicePixelRatio()).toSize()};
}

std::uint32_t nativeId(const QWidget &window)
{
    return static_cast<std::uint32_t>(window.winId());
}

} // namespace

X11ScreenCover::X11ScreenCover(QObject *parent)
    : ScreenCover(parent),
      m_connection(connection()),
      m_screens(m_connection),
      m_grabber(std::make_unique<x11::Grabber>(m_connection))
{
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow *now) {
        if (!now && m_keyboardWindow)
            takeBackSoon();
    });
}

X11ScreenCover::~X11ScreenCover() = default;

void X11ScreenCover::prepare(QWidget &window, QScreen &screen)
{
    window.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint |
                          Qt::WindowStaysOnTopHint);
    window.setAttribute(Qt::WA_ShowWithoutActivating);
    window.setScreen(&screen);
    window.setGeometry(screen.geometry());
    window.winId();                                      // creates the native window, for its properties
    setCardinal(window, "_NET_WM_DESKTOP", 0xFFFFFFFF);  // all workspaces, for pagers and compositors
    setCardinal(window, "_NET_WM_BYPASS_COMPOSITOR", 2); // keep compositing, or the fade would flicker
}

void X11ScreenCover::fit(QWidget &window, QScreen &screen)
{
    window.setGeometry(screen.geometry());
}

void X11ScreenCover::show(QWidget &window)
{
    // The memory that the window shares with the server. To ask for it when the window is painted means to wait until
    // the server has copied the picture of the window before it.
    if (QBackingStore *store = window.backingStore())
        store->resize(window.size());
    window.show();
    window.raise();
}

void X11ScreenCover::hide(QWidget &window)
{
    window.hide();
}

void X11ScreenCover::takeKeyboard(QWidget &window)
{
    if (!std::exchange(m_hasKeyboard, true))
        m_before = focused();
    m_keyboardWindow = &window;
    // The server maps an override-redirect window at once, so the window can have the focus as soon as it is shown.
    focus(nativeId(window));
}

void X11ScreenCover::giveBackKeyboard()
{
    if (!std::exchange(m_hasKeyboard, false))
        return;
    const bool ours = m_keyboardWindow && focused() == nativeId(*m_keyboardWindow);
    m_keyboardWindow.clear();
    if (ours && m_before > XCB_INPUT_FOCUS_POINTER_ROOT)
        focus(m_before);
}

QSet<quint32> X11ScreenCover::heldKeys() const
{
    const Reply<xcb_query_keymap_reply_t> keymap(
        xcb_query_keymap_reply(m_connection, xcb_query_keymap(m_connection), nullptr));
    QSet<quint32> held;
    for (quint32 code = 0; keymap && code < 256; ++code) {
        if (keymap->keys[code / 8] >> (code % 8) & 1)
            held.insert(code);
    }
    return held;
}

QScreen *X11ScreenCover::currentScreen() const
{
    return QGuiApplication::screenAt(QCursor::pos());
}

ScreenCover::Fade X11ScreenCover::fade() const
{
    // A compositing manager owns this selection; without one nobody blends windows.
    const std::uint32_t manager = atom("_NET_WM_CM_S0");
    const Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, manager), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE ? Fade::WindowOpacity : Fade::Picture;
}

void X11ScreenCover::expectPictures()
{
    if (fade() != Fade::Picture)
        return;
    for (const QScreen *screen : QGuiApplication::screens())
        m_grabber->expect(nativeGeometry(*screen));
}

void X11ScreenCover::forgetPictures()
{
    m_grabber->forget();
}

QPixmap X11ScreenCover::picture(QScreen &screen) const
{
    QPixmap shown = QPixmap::fromImage(m_grabber->grab(nativeGeometry(screen)));
    if (shown.isNull()) // the server is on another machine
        return screen.grabWindow(0);
    shown.setDevicePixelRatio(screen.devicePixelRatio());
    return shown;
}

QImage X11ScreenCover::smallPicture(QScreen &screen) const
{
    return m_grabber->grabEighth(nativeGeometry(screen));
}

void X11ScreenCover::focus(std::uint32_t window)
{
    const xcb_void_cookie_t cookie =
        xcb_set_input_focus_checked(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    // The window of another client may be gone or hidden by now; then the window manager decides.
    const Reply<xcb_generic_error_t> error(xcb_request_check(m_connection, cookie));
    if (error)
        qCDebug(logPlatform) << "The keyboard could not be given to a window, X11 error" << error->error_code;
}

void X11ScreenCover::takeBackSoon()
{
    QTimer::singleShot(takeBackDelay, m_keyboardWindow, [this] {
        if (!QGuiApplication::focusWindow() && m_keyboardWindow)
            focus(nativeId(*m_keyboardWindow));
    });
}

void X11ScreenCover::setCardinal(const QWidget &window, const char *property, std::uint32_t value)
{
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, nativeId(window), atom(property), XCB_ATOM_CARDINAL, 32, 1,
                        &value);
}

std::uint32_t X11ScreenCover::focused() const
{
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return reply ? reply->focus : XCB_NONE;
}

std::uint32_t X11ScreenCover::atom(const QByteArray &name) const
{
    const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : static_cast<std::uint32_t>(XCB_ATOM_NONE);
}

} // namespace kelp
