// SPDX-License-Identifier: GPL-3.0-or-later
#include "XkbKeyLayout.h"

#include "KeyPositions.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

namespace {

// X11 numbers keys as evdev codes shifted by 8.
constexpr quint32 evdevToXkbOffset = 8;

struct KeymapDeleter {
    void operator()(xkb_keymap *keymap) const { xkb_keymap_unref(keymap); }
};
struct StateDeleter {
    void operator()(xkb_state *state) const { xkb_state_unref(state); }
};

} // namespace

XkbKeyLayout::XkbKeyLayout(xcb_connection_t *connection)
    : m_connection(connection)
    , m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS))
{
    if (!m_connection || !m_context)
        return;
    if (xkb_x11_setup_xkb_extension(m_connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
            XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr))
        m_deviceId = xkb_x11_get_core_keyboard_device_id(m_connection);
}

XkbKeyLayout::~XkbKeyLayout()
{
    if (m_context)
        xkb_context_unref(m_context);
    if (m_ownsConnection)
        xcb_disconnect(m_connection);
}

std::unique_ptr<XkbKeyLayout> XkbKeyLayout::open(const char *displayName)
{
    xcb_connection_t *connection = xcb_connect(displayName, nullptr);
    if (xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);
        return nullptr;
    }
    auto layout = std::make_unique<XkbKeyLayout>(connection);
    layout->m_ownsConnection = true;
    if (!layout->isValid())
        return nullptr;
    return layout;
}

std::optional<QString> XkbKeyLayout::character(quint32 keyCode) const
{
    const auto evdev = KeyPositions::evdevCode(keyCode);
    if (!isValid() || !evdev)
        return std::nullopt;

    // Fetched afresh each time: the user may have switched layouts since.
    const std::unique_ptr<xkb_keymap, KeymapDeleter> keymap(
        xkb_x11_keymap_new_from_device(m_context, m_connection, m_deviceId, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap)
        return std::nullopt;
    const std::unique_ptr<xkb_state, StateDeleter> state(
        xkb_x11_state_new_from_device(keymap.get(), m_connection, m_deviceId));
    if (!state)
        return std::nullopt;

    const xkb_keycode_t key = *evdev + evdevToXkbOffset;
    const xkb_layout_index_t group = xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    const xkb_keysym_t *symbols = nullptr;
    // Level 0 rather than the state's level: Caps Lock or a held Shift must
    // not change the name of a key.
    if (xkb_keymap_key_get_syms_by_level(keymap.get(), key, group, 0, &symbols) < 1)
        return std::nullopt;
    // Function keys type nothing, but their name is printed on them.
    if (symbols[0] >= XKB_KEY_F1 && symbols[0] <= XKB_KEY_F35)
        return QStringLiteral("F") + QString::number(symbols[0] - XKB_KEY_F1 + 1);
    const char32_t codePoint = xkb_keysym_to_utf32(symbols[0]);
    // Dead keys give nothing; control characters (Escape, Delete) are no name.
    if (codePoint < 0x20 || (codePoint >= 0x7f && codePoint < 0xa0))
        return std::nullopt;
    return QString::fromUcs4(&codePoint, 1);
}
