// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Workspace.h"

// Types the paste shortcut into the window that has the keyboard focus, as if
// the user had pressed it: the last step of a paste from the picker.
class PasteKeystroke {
public:
    virtual ~PasteKeystroke() = default;

    // Whether synthetic key presses reach other applications on this desktop
    // (XTest on X11). Asked afresh on each call; nothing is ever prompted.
    virtual bool isTrusted() const = 0;
    // Sends the paste shortcut that suits target's window (Ctrl+V, or the
    // terminal's own) to the focused window, once the user's own modifier
    // keys are up or a deadline has passed. Returns at once. Does nothing
    // when not trusted, or when the target has no clipboard-paste key.
    virtual void sendPaste(const RunningApp &target) = 0;
};
