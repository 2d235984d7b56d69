// SPDX-License-Identifier: GPL-3.0-or-later
#include "XkbKeySearch.h"

namespace {

// Evdev codes sit 8 below xkb's.
constexpr xkb_keycode_t evdevOffset = 8;

struct Search {
    xkb_keysym_t symbol;
    xkb_keycode_t found = XKB_KEYCODE_INVALID;
};

void visit(xkb_keymap *keymap, xkb_keycode_t key, void *data)
{
    auto *search = static_cast<Search *>(data);
    if (search->found != XKB_KEYCODE_INVALID)
        return;
    const xkb_keysym_t *symbols = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(keymap, key, 0, 0, &symbols);
    for (int i = 0; i < count; ++i) {
        if (symbols[i] == search->symbol)
            search->found = key;
    }
}

} // namespace

std::optional<quint32> XkbKeySearch::evdevCode(xkb_keymap *keymap, xkb_keysym_t symbol)
{
    Search search { symbol };
    xkb_keymap_key_for_each(keymap, &visit, &search);
    if (search.found == XKB_KEYCODE_INVALID || search.found < evdevOffset)
        return std::nullopt;
    return search.found - evdevOffset;
}
