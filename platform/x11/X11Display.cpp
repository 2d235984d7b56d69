// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Display.h"

#include <xcb/xcb.h>

bool X11Display::isReachable()
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    const bool reachable = !xcb_connection_has_error(connection);
    xcb_disconnect(connection);
    return reachable;
}
