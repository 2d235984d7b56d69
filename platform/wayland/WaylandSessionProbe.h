// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Asked before the application object exists, to choose Qt's platform: a
// short-lived connection of its own, with no event loop.
namespace WaylandSessionProbe {

// Whether the session's compositor lets a client watch the clipboard
// (a data-control protocol) and name the window in front (wlroots'
// foreign-toplevel or KDE's window management): our windows can then be
// native Wayland ones, and the picker still knows where to paste. False
// without a compositor.
bool hostsNativeWindows();

} // namespace WaylandSessionProbe
