// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <Qt>

#include <optional>

class KeyLayout;

// Turns shortcuts into the compact glyph text the user sees ("⌃⌘V") and
// keyboard modifiers into the stored Carbon-style mask.
namespace HotKeyTranslator {

// Super counts as Command and Alt as Option; keypad and group-switch flags are
// dropped.
quint32 carbonModifiers(Qt::KeyboardModifiers modifiers);

// Modifier glyphs in the fixed order ⌃⌥⇧⌘, then the key's name. Bits outside
// the four modifiers show nothing.
QString displayString(quint32 keyCode, quint32 modifiers, const KeyLayout *layout);

// The fixed name of Return, Tab, Space, Backspace, Escape and the arrows;
// otherwise the upper-cased character the layout gives the key; otherwise
// "key(<code>)". A null layout means no layout data is available.
QString keyName(quint32 keyCode, const KeyLayout *layout);

// The shortcut as desktops' shortcut strings write it ("CTRL+LOGO+v"):
// modifiers, then the key's keysym name. No value when the key has no name
// here: the desktop then asks the user for one.
std::optional<QString> shortcutString(quint32 keyCode, quint32 modifiers, const KeyLayout *layout);

} // namespace HotKeyTranslator
