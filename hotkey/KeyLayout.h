// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// Tells which character a physical key types on the keyboard layout in force
// right now, with no modifier held. Asked afresh on every call, so that the
// shortcut's text follows a change of layout.
class KeyLayout {
public:
    virtual ~KeyLayout() = default;

    // keyCode is a key position in macOS virtual key code numbering (see
    // KeyPositions). No value when the layout has nothing for that key.
    virtual std::optional<QString> character(quint32 keyCode) const = 0;
};
