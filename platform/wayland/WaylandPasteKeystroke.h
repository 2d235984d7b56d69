// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PasteKeystroke.h"
#include "PasteShortcut.h"

#include <memory>

class WaylandConnection;
struct wl_seat;
struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

// Types the paste shortcut through a virtual keyboard of ours
// (zwp-virtual-keyboard-unstable-v1), with a US keymap of its own that the
// focused window reads our keys with. The keyboard is made once and kept: a
// new one makes the seat gain a keyboard, and the window learns of it too
// late for the first key about one time in three. A wlroots compositor keeps
// each keyboard's modifiers apart, so the user's own held keys do not mix
// with ours and nothing waits for them.
class WaylandPasteKeystroke : public PasteKeystroke {
public:
    // Nothing when there is no compositor; without the virtual keyboard
    // protocol, one that is not trusted.
    static std::unique_ptr<WaylandPasteKeystroke> open();
    ~WaylandPasteKeystroke() override;

    // The compositor offers virtual keyboards, and ours is working.
    bool isTrusted() const override;
    void sendPaste(const RunningApp &target) override;

private:
    // Evdev key codes, and the modifier masks of our keymap.
    struct Keys {
        quint32 control = 0;
        quint32 shift = 0;
        quint32 alt = 0;
        quint32 v = 0;
        quint32 controlMask = 0;
        quint32 shiftMask = 0;
        quint32 altMask = 0;
    };

    explicit WaylandPasteKeystroke(std::unique_ptr<WaylandConnection> connection);
    bool createKeyboard();
    void send(PasteShortcut shortcut);

    std::unique_ptr<WaylandConnection> m_connection;
    wl_seat *m_seat = nullptr;
    zwp_virtual_keyboard_manager_v1 *m_manager = nullptr;
    zwp_virtual_keyboard_v1 *m_keyboard = nullptr;
    Keys m_keys;
};
