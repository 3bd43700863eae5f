#pragma once

#include "platform/KeySource.h"
#include "platform/linux/KeyTranslator.h"

#include <memory>

struct xcb_connection_t;
struct xcb_ge_generic_event_t;
struct xkb_context;

namespace kelp {

/// The keys of the X server's keyboards, whoever they are for: raw key events of the X Input extension, version 2, on a
/// connection of its own. Nothing is grabbed and nothing is taken from anybody.
class X11KeySource final : public KeySource
{
    Q_OBJECT

public:
    explicit X11KeySource(QObject *parent = nullptr);
    ~X11KeySource() override;

    /// Whether the X server that Qt talks to is a window system's within Wayland.
    [[nodiscard]] static bool isWithinWayland();

    void start() override;
    [[nodiscard]] bool seesAll() const override { return m_seesAll; }

private:
    struct Free
    {
        void operator()(xcb_connection_t *connection) const;
        void operator()(xkb_context *context) const;
    };

    [[nodiscard]] bool open();
    [[nodiscard]] bool askForKeys();
    [[nodiscard]] bool askForKeyboard();
    void readEvents();
    void readKey(const xcb_ge_generic_event_t &event);
    void loadKeymap();

    std::unique_ptr<xcb_connection_t, Free> m_connection;
    std::unique_ptr<xkb_context, Free> m_context;
    KeyTranslator m_translator;
    bool m_keymapIsOld = false; ///< to be read again when the next key comes
    qint32 m_keyboard = -1;
    quint8 m_inputOpcode = 0;
    quint8 m_keyboardEvent = 0;
    bool m_seesAll = false;
};

} // namespace kelp
