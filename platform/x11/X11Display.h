// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct xcb_connection_t;

// The X server of the session, as $DISPLAY names it.
namespace X11Display {

// Whether a connection can be made, checked before Qt tries: Qt aborts
// with a long message when it cannot connect.
bool isReachable();

// Qt's own connection to it, when Qt runs on xcb; null otherwise.
xcb_connection_t *qtConnection();

} // namespace X11Display
