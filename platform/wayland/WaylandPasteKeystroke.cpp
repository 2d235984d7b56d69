// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandPasteKeystroke.h"

#include "WaylandConnection.h"
#include "XkbKeySearch.h"

#include "virtual-keyboard-unstable-v1-client.h"

#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

template<typename T, void (*Free)(T *)> struct Deleter {
    void operator()(T *object) const { Free(object); }
};
using XkbContext = std::unique_ptr<xkb_context, Deleter<xkb_context, xkb_context_unref>>;
using XkbKeymap = std::unique_ptr<xkb_keymap, Deleter<xkb_keymap, xkb_keymap_unref>>;

quint32 maskOf(xkb_keymap *keymap, const char *modifier)
{
    const xkb_mod_index_t index = xkb_keymap_mod_get_index(keymap, modifier);
    return index == XKB_MOD_INVALID ? 0 : 1U << index;
}

// Milliseconds on a clock that only grows, wrapping as the protocol's do.
quint32 now()
{
    using namespace std::chrono;
    return quint32(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

} // namespace

std::unique_ptr<WaylandPasteKeystroke> WaylandPasteKeystroke::open()
{
    std::unique_ptr<WaylandConnection> connection = WaylandConnection::open();
    if (!connection)
        return nullptr;
    std::unique_ptr<WaylandPasteKeystroke> keystroke(new WaylandPasteKeystroke(std::move(connection)));
    if (!keystroke->createKeyboard() && keystroke->m_keyboard) {
        zwp_virtual_keyboard_v1_destroy(keystroke->m_keyboard);
        keystroke->m_keyboard = nullptr;
    }
    // The keyboard is on the seat before anyone types, and a refusal is
    // known.
    wl_display_roundtrip(keystroke->m_connection->display());
    return keystroke;
}

WaylandPasteKeystroke::WaylandPasteKeystroke(std::unique_ptr<WaylandConnection> connection)
    : m_connection(std::move(connection))
{
}

WaylandPasteKeystroke::~WaylandPasteKeystroke()
{
    if (m_keyboard)
        zwp_virtual_keyboard_v1_destroy(m_keyboard);
    if (m_manager)
        zwp_virtual_keyboard_manager_v1_destroy(m_manager);
    if (m_seat)
        wl_seat_destroy(m_seat);
    m_connection->flush();
}

bool WaylandPasteKeystroke::createKeyboard()
{
    m_manager = static_cast<zwp_virtual_keyboard_manager_v1 *>(
        m_connection->bind(&zwp_virtual_keyboard_manager_v1_interface, 1));
    m_seat = static_cast<wl_seat *>(m_connection->bind(&wl_seat_interface, 1));
    if (!m_manager || !m_seat)
        return false;
    m_keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(m_manager, m_seat);

    const XkbContext context(xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES));
    if (!context)
        return false;
    const xkb_rule_names names { "evdev", "pc105", "us", nullptr, nullptr };
    const XkbKeymap keymap(xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap)
        return false;
    std::array<quint32, 4> codes {};
    const xkb_keysym_t symbols[] = { XKB_KEY_Control_L, XKB_KEY_Shift_L, XKB_KEY_Alt_L, XKB_KEY_v };
    for (size_t i = 0; i < codes.size(); ++i) {
        const std::optional<quint32> code = XkbKeySearch::evdevCode(keymap.get(), symbols[i]);
        if (!code)
            return false;
        codes[i] = *code;
    }
    m_keys = { codes[0], codes[1], codes[2], codes[3], maskOf(keymap.get(), XKB_MOD_NAME_CTRL),
        maskOf(keymap.get(), XKB_MOD_NAME_SHIFT), maskOf(keymap.get(), XKB_MOD_NAME_ALT) };
    // The compositor maps the keymap from a file, NUL included.
    const std::unique_ptr<char, Deleter<void, free>> text(
        xkb_keymap_get_as_string(keymap.get(), XKB_KEYMAP_FORMAT_TEXT_V1));
    if (!text)
        return false;
    const size_t size = std::strlen(text.get()) + 1;
    const int fd = memfd_create("zettly-keymap", MFD_CLOEXEC);
    if (fd < 0)
        return false;
    size_t written = 0;
    while (written < size) {
        const ssize_t done = ::write(fd, text.get() + written, size - written);
        if (done <= 0) {
            close(fd);
            return false;
        }
        written += size_t(done);
    }
    // The request takes a copy of the descriptor.
    zwp_virtual_keyboard_v1_keymap(m_keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, fd, quint32(size));
    close(fd);
    return true;
}

bool WaylandPasteKeystroke::isTrusted() const
{
    m_connection->dispatchArrived();
    return m_keyboard && !m_connection->isBroken();
}

void WaylandPasteKeystroke::sendPaste(const RunningApp &target)
{
    const PasteShortcut shortcut = PasteShortcuts::forApplication(target.identifier);
    if (shortcut == PasteShortcut::None || !isTrusted())
        return;
    send(shortcut);
}

void WaylandPasteKeystroke::send(PasteShortcut shortcut)
{
    std::array<std::pair<quint32, quint32>, 2> held {};
    size_t count = 0;
    held[count++] = { m_keys.control, m_keys.controlMask };
    if (shortcut == PasteShortcut::ControlShiftV)
        held[count++] = { m_keys.shift, m_keys.shiftMask };
    if (shortcut == PasteShortcut::ControlAltV)
        held[count++] = { m_keys.alt, m_keys.altMask };

    quint32 modifiers = 0;
    for (size_t i = 0; i < count; ++i) {
        zwp_virtual_keyboard_v1_key(m_keyboard, now(), held[i].first, WL_KEYBOARD_KEY_STATE_PRESSED);
        modifiers |= held[i].second;
        zwp_virtual_keyboard_v1_modifiers(m_keyboard, modifiers, 0, 0, 0);
    }
    zwp_virtual_keyboard_v1_key(m_keyboard, now(), m_keys.v, WL_KEYBOARD_KEY_STATE_PRESSED);
    zwp_virtual_keyboard_v1_key(m_keyboard, now(), m_keys.v, WL_KEYBOARD_KEY_STATE_RELEASED);
    for (size_t i = count; i-- > 0;) {
        zwp_virtual_keyboard_v1_key(m_keyboard, now(), held[i].first, WL_KEYBOARD_KEY_STATE_RELEASED);
        modifiers &= ~held[i].second;
        zwp_virtual_keyboard_v1_modifiers(m_keyboard, modifiers, 0, 0, 0);
    }
    m_connection->flush();
}
