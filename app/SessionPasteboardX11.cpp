// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionPasteboard.h"

#include "X11Pasteboard.h"

// Built without the Wayland clipboard: X11's, also under XWayland.
std::unique_ptr<Pasteboard> openSessionPasteboard()
{
    return std::make_unique<X11Pasteboard>();
}
