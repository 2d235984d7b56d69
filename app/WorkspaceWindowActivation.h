// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "WindowActivation.h"
#include "Workspace.h"

// Activates our windows the way the workspace activates any application's.
class WorkspaceWindowActivation : public WindowActivation {
public:
    explicit WorkspaceWindowActivation(Workspace &workspace)
        : m_workspace(workspace)
    {
    }

    void activate(quint64 windowId) override { m_workspace.activate({ windowId, Workspace::ownIdentifier }); }

private:
    Workspace &m_workspace;
};
