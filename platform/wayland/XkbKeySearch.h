// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <optional>

#include <xkbcommon/xkbcommon.h>

namespace XkbKeySearch {

// The evdev code of the first key that gives symbol without a modifier, in
// the keymap's first layout.
std::optional<quint32> evdevCode(xkb_keymap *keymap, xkb_keysym_t symbol);

} // namespace XkbKeySearch
