// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>

// A global shortcut as it is stored: a physical key position (macOS virtual key
// code numbering) and a Carbon-style modifier mask. Bits outside the four
// known modifiers are kept and passed on untouched.
struct HotKeyConfig {
    enum Modifier : quint32 {
        Command = 256,
        Shift = 512,
        Option = 2048,
        Control = 4096,
    };

    quint32 keyCode = 9; // V
    quint32 modifiers = Control | Command;

    static HotKeyConfig defaultShortcut() { return {}; }

    // Compact JSON, "keyCode" then "modifiers": {"keyCode":9,"modifiers":4352}.
    QByteArray toJson() const;
    // Needs both members as integers in 0..4294967295, in any order; other
    // members are ignored. Anything else gives no value.
    static std::optional<HotKeyConfig> fromJson(const QByteArray &json);

    friend bool operator==(const HotKeyConfig &, const HotKeyConfig &) = default;
};
