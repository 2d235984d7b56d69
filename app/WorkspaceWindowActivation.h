// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DesktopWindows.h"
#include "WindowActivation.h"

// Activates our windows the way the desktop activates any application's.
class WorkspaceWindowActivation : public WindowActivation {
public:
    explicit WorkspaceWindowActivation(DesktopWindows &windows)
        : m_windows(windows)
    {
    }

    void activate(quint64 windowId) override { m_windows.activate({ windowId, Workspace::ownIdentifier }); }

private:
    DesktopWindows &m_windows;
};
