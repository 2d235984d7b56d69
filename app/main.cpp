// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "ClipboardWatcher.h"
#include "HistoryFolder.h"
#include "Workspace.h"
#include "X11Pasteboard.h"
#include "X11Workspace.h"

#include <QGuiApplication>

int main(int argc, char *argv[])
{
    // The clipboard and the windows are reached through X11, also under
    // XWayland, until a Wayland backend exists.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Zettly"));
    QGuiApplication::setApplicationVersion(QStringLiteral(ZETTLY_VERSION));
    QGuiApplication::setDesktopFileName(Workspace::ownIdentifier);
    QGuiApplication::setQuitOnLastWindowClosed(false);

    AppSettings &settings = AppSettings::shared();
    ClipboardStore store(settings, HistoryFolder::standardPath());
    X11Pasteboard pasteboard;
    X11Workspace workspace;
    ClipboardWatcher watcher(pasteboard, workspace, store, settings);
    watcher.start();
    return app.exec();
}
