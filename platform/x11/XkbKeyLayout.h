// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyLayout.h"

#include <memory>

struct xcb_connection_t;
struct xkb_context;
struct xkb_keymap;

// Reads the X server's current keyboard layout through xkbcommon: which
// character a key position types on the effective layout group, at the base
// level (no Shift, no Caps Lock). Function keys answer with their printed
// name ("F1"), since they type no character.
class XkbKeyLayout : public KeyLayout {
public:
    // Uses a connection owned by someone else (in the app, Qt's), which must
    // outlive this object.
    explicit XkbKeyLayout(xcb_connection_t *connection);
    ~XkbKeyLayout() override;

    // Opens a connection of its own to displayName ($DISPLAY when null).
    // Null when there is no X server or it lacks the XKB extension.
    static std::unique_ptr<XkbKeyLayout> open(const char *displayName = nullptr);

    // False when the server lacks the XKB extension; every look-up then gives
    // nothing.
    bool isValid() const { return m_deviceId >= 0; }

    std::optional<QString> character(quint32 keyCode) const override;

    // The X key code of the key that types this lower-case letter at the base
    // level: on the effective layout group, else on another group (the
    // Latin one of a layout pair such as us,ru). None when no group has it.
    std::optional<quint8> xKeyCodeTyping(char32_t letter) const;

private:
    struct KeymapDeleter {
        void operator()(xkb_keymap *keymap) const;
    };
    // The server's keymap now, and the group in effect.
    struct Current {
        std::unique_ptr<xkb_keymap, KeymapDeleter> keymap;
        quint32 group = 0;
    };
    std::optional<Current> current() const;

    xcb_connection_t *m_connection = nullptr;
    bool m_ownsConnection = false;
    int m_deviceId = -1;
    xkb_context *m_context = nullptr;
};
