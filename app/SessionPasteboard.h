// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class Pasteboard;

// The clipboard of the session Zettly runs in: Wayland's where the compositor
// lets a client watch it, X11's otherwise (XWayland included). Needs the
// QGuiApplication.
std::unique_ptr<Pasteboard> openSessionPasteboard();
