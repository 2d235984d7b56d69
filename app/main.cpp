// SPDX-License-Identifier: GPL-3.0-or-later
#include "Workspace.h"
#include "X11Display.h"
#include "ZettlyAppDelegate.h"

#include <QApplication>
#include <QIcon>

#include <cstdio>

int main(int argc, char *argv[])
{
    // The clipboard, the shortcut and the windows are reached through X11,
    // also under XWayland, until a Wayland backend exists: Qt on any other
    // platform would watch another clipboard than the one the X11 parts read.
    qputenv("QT_QPA_PLATFORM", "xcb");
    if (!X11Display::isReachable()) {
        std::fputs("zettly : aucun affichage X11 accessible (DISPLAY n'est pas défini ou le serveur ne répond pas) ; "
                   "Zettly s'ouvre dans une session de bureau X11.\n",
            stderr);
        return 1;
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zettly"));
    QApplication::setApplicationVersion(QStringLiteral(ZETTLY_VERSION));
    QApplication::setDesktopFileName(Workspace::ownIdentifier);
    // Qt's own fallback, hicolor, has almost none of the icons the windows
    // name; the user's theme still comes first. Before any icon is looked up:
    // the first look-up fixes the themes.
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
    // A tray app: closing the preferences must not end it.
    QApplication::setQuitOnLastWindowClosed(false);

    ZettlyAppDelegate delegate;
    if (!delegate.applicationDidFinishLaunching())
        return 0;
    return app.exec();
}
