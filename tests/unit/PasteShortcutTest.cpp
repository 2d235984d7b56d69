// SPDX-License-Identifier: GPL-3.0-or-later
#include "PasteShortcut.h"

#include <gtest/gtest.h>

// Identifiers as the workspaces read them from real windows: WM_CLASS
// classes, desktop-entry ids and Wayland app_ids, in the case their programs
// use.
TEST(PasteShortcut, TerminalsGetTheirOwnPasteKeys)
{
    const struct {
        const char *identifier;
        PasteShortcut shortcut;
    } rows[] = {
        { "Lxterminal", PasteShortcut::ControlShiftV },
        { "org.gnome.Terminal", PasteShortcut::ControlShiftV },
        { "kitty", PasteShortcut::ControlShiftV },
        { "foot", PasteShortcut::ControlShiftV },
        { "St", PasteShortcut::ControlShiftV },
        { "URxvt", PasteShortcut::ControlAltV },
        { "XTerm", PasteShortcut::None },
        // Not terminals, though close in name.
        { "org.gnome.TextEditor", PasteShortcut::ControlV },
        { "Stacer", PasteShortcut::ControlV },
        { "kitty-launcher", PasteShortcut::ControlV },
        { "", PasteShortcut::ControlV },
    };
    for (const auto &row : rows)
        EXPECT_EQ(PasteShortcuts::forApplication(QString::fromLatin1(row.identifier)), row.shortcut) << row.identifier;
    EXPECT_EQ(PasteShortcuts::forApplication(std::nullopt), PasteShortcut::ControlV);
}
