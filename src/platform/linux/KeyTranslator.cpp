#include "platform/linux/KeyTranslator.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

namespace kelp {

namespace {

bool isModifier(xkb_keysym_t symbol)
{
    return (symbol >= XKB_KEY_Shift_L && symbol <= XKB_KEY_Hyper_R) ||
           (symbol >= XKB_KEY_ISO_Lock && symbol <= XKB_KEY_ISO_Level5_Lock) || symbol == XKB_KEY_Mode_switch ||
           symbol == XKB_KEY_Num_Lock || symbol == XKB_KEY_Scroll_Lock || symbol == XKB_KEY_Multi_key;
}

} // namespace

void KeyTranslator::Unref::operator()(xkb_keymap *keymap) const
{
    xkb_keymap_unref(keymap);
}

void KeyTranslator::Unref::operator()(xkb_state *state) const
{
    xkb_state_unref(state);
}

void KeyTranslator::setKeymap(xkb_keymap *keymap)
{
    m_state.reset(keymap ? xkb_state_new(keymap) : nullptr);
    m_shiftOnly.reset(keymap ? xkb_state_new(keymap) : nullptr);
    m_keymap.reset(keymap);
}

void KeyTranslator::setModifiers(quint32 depressed, quint32 latched, quint32 locked, quint32 layout)
{
    if (m_state)
        xkb_state_update_mask(m_state.get(), depressed, latched, locked, 0, 0, layout);
}

std::optional<KeyPress> KeyTranslator::keyDown(quint32 code)
{
    if (!m_state)
        return {};
    // A key that has not come up since it went down is held.
    const bool isRepeat = m_down.contains(code);
    m_down.insert(code);
    const xkb_keysym_t symbol = xkb_state_key_get_one_sym(m_state.get(), code);
    std::optional<KeyPress> press;
    if (!isModifier(symbol)) {
        press = KeyPress{.text = text(code),
                         .control = isHeld(XKB_MOD_NAME_CTRL),
                         .alt = isHeld(XKB_MOD_NAME_ALT) || isHeld("Mod5"),
                         .meta = isHeld(XKB_MOD_NAME_LOGO),
                         .isRepeat = isRepeat};
    }
    if (m_followsModifiers && !isRepeat)
        xkb_state_update_key(m_state.get(), code, XKB_KEY_DOWN);
    return press;
}

void KeyTranslator::keyUp(quint32 code)
{
    if (m_down.remove(code) && m_followsModifiers)
        xkb_state_update_key(m_state.get(), code, XKB_KEY_UP);
}

bool KeyTranslator::isHeld(const char *modifier) const
{
    return xkb_state_mod_name_is_active(m_state.get(), modifier, XKB_STATE_MODS_EFFECTIVE) > 0;
}

QString KeyTranslator::text(quint32 code) const
{
    const xkb_mod_index_t shift = xkb_keymap_mod_get_index(m_keymap.get(), XKB_MOD_NAME_SHIFT);
    const xkb_mod_mask_t held = shift < 32 && isHeld(XKB_MOD_NAME_SHIFT) ? 1U << shift : 0;
    const xkb_layout_index_t layout = xkb_state_serialize_layout(m_state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    xkb_state_update_mask(m_shiftOnly.get(), held, 0, 0, 0, 0, layout);
    char bytes[16] = "";
    xkb_state_key_get_utf8(m_shiftOnly.get(), code, bytes, sizeof bytes);
    return QString::fromUtf8(bytes);
}

} // namespace kelp
