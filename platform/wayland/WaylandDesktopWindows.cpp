// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandDesktopWindows.h"

#include "WaylandWorkspace.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>

WaylandDesktopWindows::WaylandDesktopWindows(WaylandWorkspace &others)
    : m_others(others)
{
}

void WaylandDesktopWindows::activate(const RunningApp &app)
{
    if (app.identifier != Workspace::ownIdentifier) {
        m_others.activate(app);
        return;
    }
    // The compositor decides: a newly shown window normally gets the focus
    // anyway, and Qt asks through xdg-activation where it is offered.
    const QWindowList windows = QGuiApplication::topLevelWindows();
    const auto window = std::find_if(windows.cbegin(), windows.cend(),
        [&](const QWindow *candidate) { return candidate->handle() && candidate->winId() == app.windowId; });
    if (window != windows.cend())
        (*window)->requestActivate();
}
