// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "InstanceChannel.h"
#include "InstanceLock.h"
#include "SessionBackends.h"

#include <memory>

class AppCore;
class WorkspaceWindowActivation;
class XkbKeyLayout;

// Starts the app as one instance per user session, on the session's backends.
class ZettlyAppDelegate {
public:
    ZettlyAppDelegate();
    ~ZettlyAppDelegate();

    // False when another copy already runs: this one then ends at once,
    // having touched neither the history nor the clipboard.
    bool applicationDidFinishLaunching();

private:
    void onCommandReceived(InstanceChannel::Command command);
    // The settings' shortcut registered with the desktop's portal as well,
    // where the session has one.
    void startShortcutsPortal();

    InstanceLock m_instanceLock;
    InstanceChannel m_channel;
    SessionBackends m_backends;
    std::unique_ptr<XkbKeyLayout> m_keyLayout;
    std::unique_ptr<WorkspaceWindowActivation> m_windowActivation;
    std::unique_ptr<AppCore> m_core;
};
