#pragma once

#include "platform/KeySource.h"

#include <QSet>

#include <memory>
#include <optional>

struct xkb_keymap;
struct xkb_state;

namespace kelp {

/// Finds out what the keys of a keyboard type, from their XKB key codes.
class KeyTranslator
{
public:
    /// Takes the keymap over. While there is none, no key means anything.
    void setKeymap(xkb_keymap *keymap);

    /// The bits of XKB's modifiers and the layout that are in force, where somebody else keeps count of them.
    void setModifiers(quint32 depressed, quint32 latched, quint32 locked, quint32 layout);
    /// Keeps count of the modifiers that are held, where nobody else does.
    void followModifiers() { m_followsModifiers = true; }

    /// What the key types that goes down, without its time; nothing for a key that only modifies others.
    [[nodiscard]] std::optional<KeyPress> keyDown(quint32 code);
    void keyUp(quint32 code);

private:
    struct Unref
    {
        void operator()(xkb_keymap *keymap) const;
        void operator()(xkb_state *state) const;
    };

    [[nodiscard]] bool isHeld(const char *modifier) const;
    [[nodiscard]] QString text(quint32 code) const;

    std::unique_ptr<xkb_keymap, Unref> m_keymap;
    std::unique_ptr<xkb_state, Unref> m_state;
    std::unique_ptr<xkb_state, Unref> m_shiftOnly; ///< for looking texts up
    QSet<quint32> m_down;
    bool m_followsModifiers = false;
};

} // namespace kelp
