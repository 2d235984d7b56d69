// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DesktopWindows.h"

class WaylandWorkspace;

// The desktop of a Wayland session where our windows are native Wayland
// ones: other applications' windows are brought back through the
// compositor's window list, ours through Qt. A compositor draws every
// window, and a fixed-size window is floated even by a tiling one, so the
// panel needs no hints.
class WaylandDesktopWindows : public DesktopWindows {
public:
    // The workspace must outlive this object.
    explicit WaylandDesktopWindows(WaylandWorkspace &others);

    void activate(const RunningApp &app) override;
    bool hasCompositor() const override { return true; }
    bool fadesWindows() const override { return false; }
    bool takesUnmanagedPanels() const override { return false; }
    void prepareFloatingPanel(quint64) override { }

private:
    WaylandWorkspace &m_others;
};
