// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Workspace.h"

// A desktop in memory, for tests: the frontmost application is whatever the
// test says, and activating one makes it frontmost.
class MemoryWorkspace : public Workspace {
public:
    void setFrontmostApp(std::optional<RunningApp> app) { m_frontmost = std::move(app); }
    // Shorthand for an application with this identifier in front.
    void setFrontmostIdentifier(const QString &identifier);

    std::optional<RunningApp> frontmostApp() const override { return m_frontmost; }
    void activate(const RunningApp &app) override { m_frontmost = app; }

private:
    std::optional<RunningApp> m_frontmost;
};
