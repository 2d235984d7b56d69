// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionPasteboard.h"

#include "WaylandPasteboard.h"
#include "X11Pasteboard.h"

#include <cstdio>

std::unique_ptr<Pasteboard> openSessionPasteboard()
{
    if (std::unique_ptr<WaylandPasteboard> wayland = WaylandPasteboard::open())
        return wayland;
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        std::fputs("zettly : ce compositeur Wayland ne laisse pas lire le presse-papiers (pas de data-control) ; "
                   "seules les copies faites dans des fenêtres X11 seront enregistrées.\n",
            stderr);
    return std::make_unique<X11Pasteboard>();
}
