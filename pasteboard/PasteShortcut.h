// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// The key combination that pastes the clipboard in an application. Terminal
// emulators read Ctrl+V as a control character, so most take Ctrl+Shift+V;
// Shift+Insert is never used, as many terminals paste the PRIMARY selection
// with it.
enum class PasteShortcut {
    ControlV,
    ControlShiftV,
    // rxvt-unicode's.
    ControlAltV,
    // No key pastes the clipboard there (xterm): the entry stays on the
    // clipboard for the user.
    None,
};

namespace PasteShortcuts {

// The shortcut for an application identified as Workspace identifies it (a
// desktop-entry id, a WM_CLASS class or a Wayland app_id), compared without
// regard to case.
// Ctrl+V for every application not known to be a terminal.
PasteShortcut forApplication(const std::optional<QString> &identifier);

} // namespace PasteShortcuts
