// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DesktopWindows.h"
#include "Workspace.h"

#include <QList>

// A desktop in memory, for tests: the frontmost application is whatever the
// test says, and activating one makes it frontmost.
class MemoryWorkspace : public Workspace, public DesktopWindows {
public:
    void setFrontmostApp(std::optional<RunningApp> app) { m_frontmost = std::move(app); }
    // Shorthand for an application with this identifier in front.
    void setFrontmostIdentifier(const QString &identifier);
    void setCompositor(bool running) { m_compositor = running; }
    // The windows passed to prepareFloatingPanel, in call order.
    QList<quint64> floatingPanels() const { return m_floatingPanels; }

    std::optional<RunningApp> frontmostApp() const override { return m_frontmost; }
    void activate(const RunningApp &app) override { m_frontmost = app; }
    bool hasCompositor() const override { return m_compositor; }
    bool takesUnmanagedPanels() const override { return true; }
    void prepareFloatingPanel(quint64 windowId) override { m_floatingPanels.append(windowId); }

private:
    std::optional<RunningApp> m_frontmost;
    bool m_compositor = false;
    QList<quint64> m_floatingPanels;
};
