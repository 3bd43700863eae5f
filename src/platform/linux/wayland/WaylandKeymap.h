#pragma once

#include <QObject>

#include <functional>
#include <memory>

struct wl_display;
struct wl_keyboard;
struct wl_registry;
struct wl_seat;
struct xkb_context;
struct xkb_keymap;

namespace kelp {

/// The keymap of the compositor's seat, on a connection of its own. Compositors tell it to everybody; which of its
/// layouts is in use they tell only to the window that has the keyboard.
class WaylandKeymap final : public QObject
{
    Q_OBJECT

public:
    /// Calls `take` with a new keymap, which is then the taker's, whenever there is one. Where there is no compositor,
    /// it is called once with the one that XKB_DEFAULT_LAYOUT and its like describe.
    WaylandKeymap(std::function<void(xkb_keymap *)> take, QObject *parent);
    ~WaylandKeymap() override;

private:
    struct Listeners; ///< what the C interface calls
    struct Release
    {
        void operator()(wl_display *display) const;
        void operator()(xkb_context *context) const;
    };

    void listen();
    void readEvents();
    void takeKeymap(quint32 format, int descriptor, quint32 size);

    std::function<void(xkb_keymap *)> m_take;
    std::unique_ptr<xkb_context, Release> m_context;
    std::unique_ptr<wl_display, Release> m_display;
    wl_registry *m_registry = nullptr;
    wl_seat *m_seat = nullptr;
    wl_keyboard *m_keyboard = nullptr;
};

} // namespace kelp
