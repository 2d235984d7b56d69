// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionBackends.h"

#include "KWinFakeInputKeystroke.h"
#include "WaylandDesktopWindows.h"
#include "WaylandPasteboard.h"
#include "WaylandPasteKeystroke.h"
#include "WaylandSessionProbe.h"
#include "WaylandWorkspace.h"
#include "X11ClickMonitor.h"
#include "X11KeyGrabber.h"
#include "X11PasteKeystroke.h"
#include "X11Workspace.h"
#include "XWaylandDesktopWindows.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QLibraryInfo>

#include <cstdio>

QByteArray sessionQtPlatform()
{
    // Qt's Wayland platform is a package of its own (qt6-wayland): without
    // it our windows stay on XWayland.
    const bool qtHasWayland
        = QFileInfo::exists(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platforms/libqwayland-generic.so");
    return qtHasWayland && WaylandSessionProbe::hostsNativeWindows() ? QByteArrayLiteral("wayland")
                                                                     : QByteArrayLiteral("xcb");
}

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
    const bool nativeWindows = QGuiApplication::platformName() == u"wayland";
    // Native, our windows carry the desktop file name as their app_id; on
    // XWayland, Qt's WM_CLASS class, the application name.
    if (std::unique_ptr<WaylandWorkspace> workspace
        = WaylandWorkspace::open({ Workspace::ownIdentifier, QGuiApplication::applicationName() })) {
        if (nativeWindows)
            backends.desktopWindows = std::make_unique<WaylandDesktopWindows>(*workspace);
        else
            backends.desktopWindows = std::make_unique<XWaylandDesktopWindows>(*workspace);
        backends.workspace = std::move(workspace);
    } else {
        backends.workspace = std::make_unique<X11Workspace>();
        backends.desktopWindows = std::make_unique<X11Workspace>();
    }
    // A virtual keyboard where wlroots offers one, KWin's fake input on
    // Plasma; with neither, one that is not trusted, and the entry stays on
    // the clipboard: XTest would reach X11 windows only.
    std::unique_ptr<WaylandPasteKeystroke> keyboard = WaylandPasteKeystroke::open();
    if (keyboard && keyboard->isTrusted())
        backends.pasteKeystroke = std::move(keyboard);
    else if (std::unique_ptr<KWinFakeInputKeystroke> fakeInput = KWinFakeInputKeystroke::open())
        backends.pasteKeystroke = std::move(fakeInput);
    else if (keyboard)
        backends.pasteKeystroke = std::move(keyboard);
    else
        backends.pasteKeystroke = std::make_unique<X11PasteKeystroke>();
    // X11 grabs keys and sees clicks only over X11 windows, and not at all
    // once ours are native.
    if (!nativeWindows) {
        backends.keyGrabber = std::make_unique<X11KeyGrabber>();
        backends.clickMonitor = std::make_unique<X11ClickMonitor>();
    }
    backends.shortcutsPortal = std::make_unique<GlobalShortcutsPortal>();
    return backends;
}
