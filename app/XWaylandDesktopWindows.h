// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DesktopWindows.h"
#include "X11Workspace.h"

class WaylandWorkspace;

// The desktop of a Wayland session where our windows are XWayland's: they
// are asked for through X11, by their X window ids; other applications'
// windows, as WaylandWorkspace names them, through the compositor.
class XWaylandDesktopWindows : public DesktopWindows {
public:
    // The workspace must outlive this object.
    explicit XWaylandDesktopWindows(WaylandWorkspace &others);

    void activate(const RunningApp &app) override;
    bool hasCompositor() const override;
    bool takesUnmanagedPanels() const override { return false; }
    void prepareFloatingPanel(quint64 windowId) override;

private:
    X11Workspace m_own;
    WaylandWorkspace &m_others;
};
