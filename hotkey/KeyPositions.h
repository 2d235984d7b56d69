// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <optional>

// Stored shortcuts name keys by position in the macOS virtual key code
// numbering, so that a file written on one machine means the same key on
// another. Linux names positions by evdev code (X11 key code = evdev + 8).
namespace KeyPositions {

std::optional<quint32> evdevCode(quint32 virtualKeyCode);
std::optional<quint32> virtualKeyCode(quint32 evdevCode);

} // namespace KeyPositions
