#include "platform/linux/x11/X11KeySource.h"

#include "base/Logging.h"
#include "platform/EventTime.h"
#include "platform/linux/x11/X11Connection.h"

#include <QGuiApplication>
#include <QSocketNotifier>

#include <xcb/xcb.h>
#include <xcb/xinput.h>
// A member of a struct there has the name of a keyword of C++.
#define explicit isExplicit
#include <xcb/xkb.h>
#undef explicit
#include <xkbcommon/xkbcommon-x11.h>

#include <string_view>
#include <utility>

namespace kelp {

namespace {

constexpr std::uint16_t keyboardEvents =
    XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY | XCB_XKB_EVENT_TYPE_STATE_NOTIFY;

} // namespace

void X11KeySource::Free::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}

void X11KeySource::Free::operator()(xkb_context *context) const
{
    xkb_context_unref(context);
}

X11KeySource::X11KeySource(QObject *parent) : KeySource(parent) {}

X11KeySource::~X11KeySource() = default;

bool X11KeySource::isWithinWayland()
{
    xcb_connection_t *connection = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    constexpr std::string_view name = "XWAYLAND";
    const auto cookie = xcb_query_extension(connection, name.size(), name.data());
    const auto reply = x11::owned(xcb_query_extension_reply(connection, cookie, nullptr));
    return reply && reply->present;
}

void X11KeySource::start()
{
    if (!open()) {
        qCWarning(logPlatform) << "the X server does not tell of keys";
        m_connection.reset();
        return;
    }
    auto *notifier = new QSocketNotifier(xcb_get_file_descriptor(m_connection.get()), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        readEvents();
        if (xcb_connection_has_error(m_connection.get())) {
            notifier->setEnabled(false);
            m_seesAll = false;
            Q_EMIT seesAllChanged();
        }
    });
    m_seesAll = true;
    Q_EMIT seesAllChanged();
    loadKeymap();
    qCInfo(logPlatform) << "the keys of all applications are heard";
    // What came with the answers while they were waited for.
    QMetaObject::invokeMethod(
        this, [this] { readEvents(); }, Qt::QueuedConnection);
}

bool X11KeySource::open()
{
    m_connection.reset(xcb_connect(nullptr, nullptr));
    m_context.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    return m_context && !xcb_connection_has_error(m_connection.get()) && askForKeyboard() && askForKeys();
}

bool X11KeySource::askForKeyboard()
{
    xcb_connection_t *connection = m_connection.get();
    if (!xkb_x11_setup_xkb_extension(connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                     XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &m_keyboardEvent, nullptr))
        return false;
    m_keyboard = xkb_x11_get_core_keyboard_device_id(connection);
    if (m_keyboard < 0)
        return false;
    xcb_xkb_select_events_details_t details{};
    details.affectNewKeyboard = details.newKeyboardDetails = XCB_XKB_NKN_DETAIL_KEYCODES;
    constexpr std::uint16_t wholeState = XCB_XKB_STATE_PART_MODIFIER_BASE | XCB_XKB_STATE_PART_MODIFIER_LATCH |
                                         XCB_XKB_STATE_PART_MODIFIER_LOCK | XCB_XKB_STATE_PART_GROUP_BASE |
                                         XCB_XKB_STATE_PART_GROUP_LATCH | XCB_XKB_STATE_PART_GROUP_LOCK;
    details.affectState = details.stateDetails = wholeState;
    constexpr std::uint16_t allParts = 0xff;
    xcb_xkb_select_events_aux(connection, static_cast<xcb_xkb_device_spec_t>(m_keyboard), keyboardEvents, 0, 0,
                              allParts, allParts, &details);
    return true;
}

bool X11KeySource::askForKeys()
{
    xcb_connection_t *connection = m_connection.get();
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (!extension || !extension->present)
        return false;
    m_inputOpcode = extension->major_opcode;
    const auto version =
        x11::owned(xcb_input_xi_query_version_reply(connection, xcb_input_xi_query_version(connection, 2, 2), nullptr));
    if (!version || version->major_version < 2)
        return false;
    struct
    {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } wanted{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
             XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE};
    const xcb_window_t root = x11::firstScreen(connection).root;
    const auto refused = x11::owned(
        xcb_request_check(connection, xcb_input_xi_select_events_checked(connection, root, 1, &wanted.head)));
    return !refused;
}

void X11KeySource::readEvents()
{
    while (const auto event = x11::owned(xcb_poll_for_event(m_connection.get()))) {
        const int type = event->response_type & 0x7f; // without the mark of an event that somebody has sent
        if (type == XCB_GE_GENERIC) {
            const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(*event);
            if (generic.extension == m_inputOpcode)
                readKey(generic);
        } else if (type == m_keyboardEvent) {
            const auto &state = reinterpret_cast<const xcb_xkb_state_notify_event_t &>(*event);
            if (state.xkbType != XCB_XKB_STATE_NOTIFY)
                m_keymapIsOld = true; // keymaps change in bursts
            else
                m_translator.setModifiers(state.baseMods, state.latchedMods, state.lockedMods, state.group);
        }
    }
}

void X11KeySource::readKey(const xcb_ge_generic_event_t &event)
{
    const auto &key = reinterpret_cast<const xcb_input_raw_key_press_event_t &>(event);
    if (event.event_type == XCB_INPUT_RAW_KEY_RELEASE) {
        m_translator.keyUp(key.detail);
    } else if (event.event_type == XCB_INPUT_RAW_KEY_PRESS) {
        if (std::exchange(m_keymapIsOld, false))
            loadKeymap();
        if (std::optional<KeyPress> press = m_translator.keyDown(key.detail)) {
            press->time = eventTime(key.time);
            Q_EMIT pressed(*press);
        }
    }
}

void X11KeySource::loadKeymap()
{
    xcb_connection_t *connection = m_connection.get();
    xkb_keymap *keymap =
        xkb_x11_keymap_new_from_device(m_context.get(), connection, m_keyboard, XKB_KEYMAP_COMPILE_NO_FLAGS);
    m_translator.setKeymap(keymap);
    const auto state = x11::owned(xcb_xkb_get_state_reply(
        connection, xcb_xkb_get_state(connection, static_cast<xcb_xkb_device_spec_t>(m_keyboard)), nullptr));
    if (state)
        m_translator.setModifiers(state->baseMods, state->latchedMods, state->lockedMods, state->group);
}

} // namespace kelp
