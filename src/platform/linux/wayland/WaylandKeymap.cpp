#include "platform/linux/wayland/WaylandKeymap.h"

#include <QSocketNotifier>

#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include <cstring>
#include <utility>

namespace kelp {

namespace {

constexpr quint32 largestKeymap = 4 << 20; ///< bytes

} // namespace

/// Events of the protocol; those that are of no interest have to be there all the same.
struct WaylandKeymap::Listeners
{
    static WaylandKeymap &self(void *data) { return *static_cast<WaylandKeymap *>(data); }

    static void global(void *data, wl_registry *registry, std::uint32_t name, const char *interface, std::uint32_t)
    {
        if (std::strcmp(interface, wl_seat_interface.name) != 0 || self(data).m_seat)
            return;
        auto *bound = wl_registry_bind(registry, name, &wl_seat_interface, 1);
        self(data).m_seat = static_cast<wl_seat *>(bound);
        wl_seat_add_listener(self(data).m_seat, &seatListener, data);
    }
    static void globalRemove(void *, wl_registry *, std::uint32_t) {}
    static void capabilities(void *data, wl_seat *owner, std::uint32_t capabilities)
    {
        if (!(capabilities & WL_SEAT_CAPABILITY_KEYBOARD) || self(data).m_keyboard)
            return;
        self(data).m_keyboard = wl_seat_get_keyboard(owner);
        wl_keyboard_add_listener(self(data).m_keyboard, &keyboardListener, data);
    }
    static void seatName(void *, wl_seat *, const char *) {}
    static void keymap(void *data, wl_keyboard *, std::uint32_t format, std::int32_t descriptor, std::uint32_t size)
    {
        self(data).takeKeymap(format, descriptor, size);
        ::close(descriptor);
    }
    static void enter(void *, wl_keyboard *, std::uint32_t, wl_surface *, wl_array *) {}
    static void leave(void *, wl_keyboard *, std::uint32_t, wl_surface *) {}
    static void key(void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {}
    static void modifiers(void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                          std::uint32_t)
    {
    }
    static void repeatInfo(void *, wl_keyboard *, std::int32_t, std::int32_t) {}

    static constexpr wl_registry_listener registryListener{global, globalRemove};
    static constexpr wl_seat_listener seatListener{capabilities, seatName};
    static constexpr wl_keyboard_listener keyboardListener{keymap, enter, leave, key, modifiers, repeatInfo};
};

void WaylandKeymap::Release::operator()(wl_display *display) const
{
    wl_display_disconnect(display);
}

void WaylandKeymap::Release::operator()(xkb_context *context) const
{
    xkb_context_unref(context);
}

WaylandKeymap::WaylandKeymap(std::function<void(xkb_keymap *)> take, QObject *parent)
    : QObject(parent),
      m_take(std::move(take)),
      m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS)),
      m_display(wl_display_connect(nullptr))
{
    if (m_display && m_context)
        listen();
    else if (m_context)
        m_take(xkb_keymap_new_from_names(m_context.get(), nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS));
}

WaylandKeymap::~WaylandKeymap()
{
    if (m_keyboard)
        wl_keyboard_destroy(m_keyboard);
    if (m_seat)
        wl_seat_destroy(m_seat);
    if (m_registry)
        wl_registry_destroy(m_registry);
}

void WaylandKeymap::listen()
{
    m_registry = wl_display_get_registry(m_display.get());
    wl_registry_add_listener(m_registry, &Listeners::registryListener, this);
    wl_display_flush(m_display.get());
    auto *notifier = new QSocketNotifier(wl_display_get_fd(m_display.get()), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        readEvents();
        if (wl_display_get_error(m_display.get()) != 0)
            notifier->setEnabled(false);
    });
}

void WaylandKeymap::readEvents()
{
    wl_display *display = m_display.get();
    while (wl_display_prepare_read(display) != 0) {
        if (wl_display_dispatch_pending(display) < 0)
            return;
    }
    wl_display_read_events(display);
    wl_display_dispatch_pending(display);
    wl_display_flush(display); // what the events were answered with
}

void WaylandKeymap::takeKeymap(quint32 format, int descriptor, quint32 size)
{
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 || size == 0 || size > largestKeymap)
        return;
    void *text = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (text == MAP_FAILED)
        return;
    const std::size_t length = ::strnlen(static_cast<const char *>(text), size);
    xkb_keymap *keymap = xkb_keymap_new_from_buffer(m_context.get(), static_cast<const char *>(text), length,
                                                    XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
    ::munmap(text, size);
    if (keymap)
        m_take(keymap);
}

} // namespace kelp
