// SPDX-License-Identifier: GPL-3.0-or-later
#include "XkbKeyLayout.h"

#include "KeyPositions.h"
#include "X11KeyCodes.h"

#include <QList>

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>

namespace {

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

void XkbKeyLayout::KeymapDeleter::operator()(xkb_keymap *keymap) const
{
    xkb_keymap_unref(keymap);
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

// Fetched afresh each time: the user may have switched layouts since.
std::optional<XkbKeyLayout::Current> XkbKeyLayout::current() const
{
    if (!isValid())
        return std::nullopt;
    Current current {
        std::unique_ptr<xkb_keymap, KeymapDeleter>(
            xkb_x11_keymap_new_from_device(m_context, m_connection, m_deviceId, XKB_KEYMAP_COMPILE_NO_FLAGS)),
        0,
    };
    if (!current.keymap)
        return std::nullopt;
    const std::unique_ptr<xkb_state, StateDeleter> state(
        xkb_x11_state_new_from_device(current.keymap.get(), m_connection, m_deviceId));
    if (!state)
        return std::nullopt;
    current.group = xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    return current;
}

std::optional<QString> XkbKeyLayout::character(quint32 keyCode) const
{
    const auto evdev = KeyPositions::evdevCode(keyCode);
    const std::optional<Current> layout = evdev ? current() : std::nullopt;
    if (!layout)
        return std::nullopt;

    const xkb_keycode_t key = *evdev + X11KeyCodes::evdevOffset;
    const xkb_keysym_t *symbols = nullptr;
    // Level 0 rather than the state's level: Caps Lock or a held Shift must
    // not change the name of a key.
    if (xkb_keymap_key_get_syms_by_level(layout->keymap.get(), key, layout->group, 0, &symbols) < 1)
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

std::optional<quint8> XkbKeyLayout::xKeyCodeTyping(char32_t letter) const
{
    const std::optional<Current> layout = current();
    if (!layout)
        return std::nullopt;
    xkb_keymap *keymap = layout->keymap.get();
    const xkb_keysym_t wanted = xkb_utf32_to_keysym(letter);
    const xkb_layout_index_t groups = xkb_keymap_num_layouts(keymap);
    // The effective group first: the key the user would press.
    QList<xkb_layout_index_t> order { layout->group };
    for (xkb_layout_index_t group = 0; group < groups; ++group) {
        if (group != layout->group)
            order.append(group);
    }
    for (const xkb_layout_index_t group : std::as_const(order)) {
        // Core X key codes stop at 255.
        const xkb_keycode_t last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(keymap), 255);
        for (xkb_keycode_t key = xkb_keymap_min_keycode(keymap); key <= last; ++key) {
            const xkb_keysym_t *symbols = nullptr;
            if (xkb_keymap_key_get_syms_by_level(keymap, key, group, 0, &symbols) >= 1 && symbols[0] == wanted)
                return quint8(key);
        }
    }
    return std::nullopt;
}
