// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionBackends.h"

#include "WaylandPasteboard.h"
#include "WaylandPasteKeystroke.h"
#include "WaylandWorkspace.h"
#include "X11PasteKeystroke.h"
#include "X11Workspace.h"
#include "XWaylandDesktopWindows.h"

#include <QCoreApplication>

#include <cstdio>

SessionBackends openSessionBackends()
{
    std::unique_ptr<WaylandPasteboard> pasteboard = WaylandPasteboard::open();
    if (!pasteboard) {
        if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
            std::fputs("zettly : ce compositeur Wayland ne laisse pas lire le presse-papiers (pas de data-control) ; "
                       "seules les copies faites dans des fenêtres X11 seront enregistrées.\n",
                stderr);
        return openX11Backends();
    }
    SessionBackends backends;
    backends.pasteboard = std::move(pasteboard);
    // Our windows are XWayland's, and carry Qt's WM_CLASS class, the
    // application name, as their app_id.
    if (std::unique_ptr<WaylandWorkspace> workspace
        = WaylandWorkspace::open({ Workspace::ownIdentifier, QCoreApplication::applicationName() })) {
        backends.desktopWindows = std::make_unique<XWaylandDesktopWindows>(*workspace);
        backends.workspace = std::move(workspace);
    } else {
        backends.workspace = std::make_unique<X11Workspace>();
        backends.desktopWindows = std::make_unique<X11Workspace>();
    }
    // Without the virtual keyboard protocol it is not trusted, and the entry
    // stays on the clipboard: XTest would reach X11 windows only.
    if (std::unique_ptr<WaylandPasteKeystroke> keystroke = WaylandPasteKeystroke::open())
        backends.pasteKeystroke = std::move(keystroke);
    else
        backends.pasteKeystroke = std::make_unique<X11PasteKeystroke>();
    backends.shortcutsPortal = std::make_unique<GlobalShortcutsPortal>();
    return backends;
}
