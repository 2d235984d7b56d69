// SPDX-License-Identifier: GPL-3.0-or-later
#include "KWinFakeInputKeystroke.h"

#include "PasteShortcut.h"
#include "WaylandConnection.h"
#include "XkbKeySearch.h"

#include "fake-input-client.h"

#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include <linux/input-event-codes.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

// keyboard_key came with version 4.
constexpr quint32 fakeInputVersion = 4;

void onKeymap(void *data, wl_keyboard *, quint32 format, qint32 fd, quint32 size)
{
    if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1)
        static_cast<KWinFakeInputKeystroke *>(data)->takeKeymap(fd, size);
    close(fd);
}
void onEnter(void *, wl_keyboard *, quint32, wl_surface *, wl_array *) { }
void onLeave(void *, wl_keyboard *, quint32, wl_surface *) { }
void onKey(void *, wl_keyboard *, quint32, quint32, quint32, quint32) { }
void onModifiers(void *, wl_keyboard *, quint32, quint32, quint32, quint32, quint32) { }

} // namespace

void KWinFakeInputKeystroke::onCapabilities(void *data, wl_seat *seat, quint32 capabilities)
{
    static const wl_keyboard_listener listener = { &onKeymap, &onEnter, &onLeave, &onKey, &onModifiers, nullptr };
    auto *keystroke = static_cast<KWinFakeInputKeystroke *>(data);
    if (!(capabilities & WL_SEAT_CAPABILITY_KEYBOARD) || keystroke->m_keyboard)
        return;
    keystroke->m_keyboard = wl_seat_get_keyboard(seat);
    wl_keyboard_add_listener(keystroke->m_keyboard, &listener, keystroke);
}

std::unique_ptr<KWinFakeInputKeystroke> KWinFakeInputKeystroke::open()
{
    std::unique_ptr<WaylandConnection> connection = WaylandConnection::open();
    if (!connection || !connection->offers(&org_kde_kwin_fake_input_interface))
        return nullptr;
    std::unique_ptr<KWinFakeInputKeystroke> keystroke(new KWinFakeInputKeystroke(std::move(connection)));
    if (!keystroke->m_fakeInput)
        return nullptr;
    // The user's keymap, before anyone pastes.
    wl_display_roundtrip(keystroke->m_connection->display());
    wl_display_roundtrip(keystroke->m_connection->display());
    return keystroke;
}

KWinFakeInputKeystroke::KWinFakeInputKeystroke(std::unique_ptr<WaylandConnection> connection)
    : m_connection(std::move(connection))
{
    m_fakeInput = static_cast<org_kde_kwin_fake_input *>(
        m_connection->bind(&org_kde_kwin_fake_input_interface, fakeInputVersion));
    if (!m_fakeInput || org_kde_kwin_fake_input_get_version(m_fakeInput) < fakeInputVersion)
        return;
    org_kde_kwin_fake_input_authenticate(
        m_fakeInput, "Zettly", "Colle l'entrée choisie dans la fenêtre où vous étiez.");
    m_seat = static_cast<wl_seat *>(m_connection->bind(&wl_seat_interface, 1));
    static const wl_seat_listener seatListener = { &onCapabilities, nullptr };
    if (m_seat)
        wl_seat_add_listener(m_seat, &seatListener, this);
}

KWinFakeInputKeystroke::~KWinFakeInputKeystroke()
{
    if (m_keyboard)
        wl_keyboard_destroy(m_keyboard);
    if (m_seat)
        wl_seat_destroy(m_seat);
    if (m_fakeInput)
        org_kde_kwin_fake_input_destroy(m_fakeInput);
    m_connection->flush();
}

void KWinFakeInputKeystroke::takeKeymap(int fd, quint32 size)
{
    void *text = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    if (text == MAP_FAILED)
        return;
    xkb_context *context = xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
    xkb_keymap *keymap = context ? xkb_keymap_new_from_buffer(context, static_cast<const char *>(text), size - 1,
                             XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS)
                                 : nullptr;
    munmap(text, size);
    if (keymap) {
        if (const std::optional<quint32> v = XkbKeySearch::evdevCode(keymap, XKB_KEY_v))
            m_v = *v;
        xkb_keymap_unref(keymap);
    }
    xkb_context_unref(context);
}

bool KWinFakeInputKeystroke::isTrusted() const
{
    m_connection->dispatchArrived();
    return m_fakeInput && !m_connection->isBroken();
}

void KWinFakeInputKeystroke::sendPaste(const RunningApp &target)
{
    const PasteShortcut shortcut = PasteShortcuts::forApplication(target.identifier);
    if (shortcut == PasteShortcut::None || !isTrusted())
        return;
    QList<quint32> held { KEY_LEFTCTRL };
    if (shortcut == PasteShortcut::ControlShiftV)
        held.append(KEY_LEFTSHIFT);
    if (shortcut == PasteShortcut::ControlAltV)
        held.append(KEY_LEFTALT);
    for (const quint32 key : std::as_const(held))
        org_kde_kwin_fake_input_keyboard_key(m_fakeInput, key, WL_KEYBOARD_KEY_STATE_PRESSED);
    org_kde_kwin_fake_input_keyboard_key(m_fakeInput, m_v, WL_KEYBOARD_KEY_STATE_PRESSED);
    org_kde_kwin_fake_input_keyboard_key(m_fakeInput, m_v, WL_KEYBOARD_KEY_STATE_RELEASED);
    for (auto key = held.crbegin(); key != held.crend(); ++key)
        org_kde_kwin_fake_input_keyboard_key(m_fakeInput, *key, WL_KEYBOARD_KEY_STATE_RELEASED);
    m_connection->flush();
}
