// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DesktopWindows.h"
#include "GlobalShortcutsPortal.h"
#include "Pasteboard.h"
#include "PasteKeystroke.h"
#include "Workspace.h"

#include <memory>

// The desktop as the session Zettly runs in offers it. Where the compositor
// lets a client watch the clipboard (Wayland with data-control), the
// clipboard, the window in front and the paste keys go through Wayland, and
// our own windows, on XWayland, through X11; elsewhere everything goes
// through X11 (XWayland included).
struct SessionBackends {
    std::unique_ptr<Pasteboard> pasteboard;
    std::unique_ptr<Workspace> workspace;
    // Lent the workspace: made after it, so ended before it.
    std::unique_ptr<DesktopWindows> desktopWindows;
    std::unique_ptr<PasteKeystroke> pasteKeystroke;
    // Where no key grab reaches native windows (Wayland): the desktop's
    // shortcut portal, not yet started. Null on X11.
    std::unique_ptr<GlobalShortcutsPortal> shortcutsPortal;
};

// Needs the QGuiApplication.
SessionBackends openSessionBackends();
// X11's alone.
SessionBackends openX11Backends();
