// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyLayout.h"

#include <memory>

struct xcb_connection_t;
struct xkb_context;

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

private:
    xcb_connection_t *m_connection = nullptr;
    bool m_ownsConnection = false;
    int m_deviceId = -1;
    xkb_context *m_context = nullptr;
};
