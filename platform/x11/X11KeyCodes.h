// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

// X11 numbers keys as evdev codes shifted by 8 (the evdev rules every
// current server uses; Xvfb too).
namespace X11KeyCodes {

inline constexpr quint32 evdevOffset = 8;

} // namespace X11KeyCodes
