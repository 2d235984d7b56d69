// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Display.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

bool X11Display::isReachable()
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    const bool reachable = !xcb_connection_has_error(connection);
    xcb_disconnect(connection);
    return reachable;
}

xcb_connection_t *X11Display::qtConnection()
{
    const auto *x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}
