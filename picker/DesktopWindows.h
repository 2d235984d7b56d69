// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Workspace.h"

#include <QtGlobal>

// What the picker asks of the desktop's window manager for its panel: to be
// a floating panel, to take and hand back the keyboard focus, and whether
// it may be translucent.
class DesktopWindows {
public:
    virtual ~DesktopWindows() = default;

    // Brings the application's window to the front and gives it the focus.
    // Does nothing when the window has gone.
    virtual void activate(const RunningApp &app) = 0;
    // Whether a compositing manager runs, so that windows may be translucent.
    virtual bool hasCompositor() const = 0;
    // Whether no window has the keyboard focus, as some window managers leave
    // it after a click on something that takes none (the desktop, a dock).
    virtual bool focusIsNowhere() const { return false; }
    // Whether our windows can fade in and out. Wayland gives a client no
    // say over a whole window's opacity.
    virtual bool fadesWindows() const { return hasCompositor(); }
    // Whether a panel may bypass the window manager (override-redirect) and
    // take the focus itself: it then shows sooner, with nothing to manage
    // it. Not under XWayland, whose compositor gives such a window no keys.
    virtual bool takesUnmanagedPanels() const = 0;
    // Asks for one of our top-level windows to be a floating panel: on every
    // desktop, without a taskbar or pager entry. Takes effect at the next
    // mapping, so call it while the window is hidden: window managers drop
    // these hints when a window is withdrawn.
    virtual void prepareFloatingPanel(quint64 windowId) = 0;
};
