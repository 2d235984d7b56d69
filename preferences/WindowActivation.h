// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

// Brings one of our windows in front of the application the user works in.
// Raising a window is not enough for that: window managers that prevent
// focus stealing leave it behind unless asked the way a pager asks.
class WindowActivation {
public:
    virtual ~WindowActivation() = default;

    // windowId is the window system's handle of a shown top-level window.
    virtual void activate(quint64 windowId) = 0;
};
