// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionBackends.h"

// Built without Wayland: X11's, also under XWayland.
QByteArray sessionQtPlatform()
{
    return QByteArrayLiteral("xcb");
}

SessionBackends openSessionBackends()
{
    return openX11Backends();
}
