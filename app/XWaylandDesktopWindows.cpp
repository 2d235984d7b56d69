// SPDX-License-Identifier: GPL-3.0-or-later
#include "XWaylandDesktopWindows.h"

#include "WaylandWorkspace.h"

XWaylandDesktopWindows::XWaylandDesktopWindows(WaylandWorkspace &others)
    : m_others(others)
{
}

void XWaylandDesktopWindows::activate(const RunningApp &app)
{
    if (app.identifier == Workspace::ownIdentifier)
        m_own.activate(app);
    else
        m_others.activate(app);
}

bool XWaylandDesktopWindows::hasCompositor() const
{
    return m_own.hasCompositor();
}

void XWaylandDesktopWindows::prepareFloatingPanel(quint64 windowId)
{
    m_own.prepareFloatingPanel(windowId);
}
