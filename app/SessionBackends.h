// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClickMonitor.h"
#include "DesktopWindows.h"
#include "GlobalShortcutsPortal.h"
#include "KeyGrabber.h"
#include "Pasteboard.h"
#include "PasteKeystroke.h"
#include "Workspace.h"

#include <memory>

// The desktop as the session Zettly runs in offers it. Where the compositor
// lets a client watch the clipboard and name the window in front (Wayland
// with data-control and foreign-toplevel), everything goes through Wayland,
// our windows included; with data-control alone, our windows stay on
// XWayland; elsewhere everything goes through X11 (XWayland included).
struct SessionBackends {
    std::unique_ptr<Pasteboard> pasteboard;
    std::unique_ptr<Workspace> workspace;
    // Lent the workspace: made after it, so ended before it.
    std::unique_ptr<DesktopWindows> desktopWindows;
    std::unique_ptr<PasteKeystroke> pasteKeystroke;
    // Null where a client may neither grab keys nor see others' clicks
    // (our windows on Wayland): the shortcut is then the desktop's, and the
    // panel hides when it loses the focus.
    std::unique_ptr<KeyGrabber> keyGrabber;
    std::unique_ptr<ClickMonitor> clickMonitor;
    // Where no key grab reaches native windows (Wayland): the desktop's
    // shortcut portal, not yet started. Null on X11.
    std::unique_ptr<GlobalShortcutsPortal> shortcutsPortal;
};

// The Qt platform for our windows, "wayland" or "xcb": chosen before the
// QGuiApplication exists, and the backends then follow Qt's choice.
QByteArray sessionQtPlatform();
// Needs the QGuiApplication.
SessionBackends openSessionBackends();
// X11's alone.
SessionBackends openX11Backends();
