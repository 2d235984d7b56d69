// SPDX-License-Identifier: GPL-3.0-or-later
#include "PasteShortcut.h"

#include <QLatin1StringView>

#include <array>
#include <utility>

namespace PasteShortcuts {

namespace {

// The identifiers of each terminal: its WM_CLASS class and, where its windows
// carry one, its desktop-entry id. Each paste key is the terminal's default
// binding.
constexpr std::array terminals {
    // GNOME Terminal, and GNOME Console (kgx).
    std::pair { QLatin1StringView("gnome-terminal"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("org.gnome.terminal"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("kgx"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("org.gnome.console"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("konsole"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("org.kde.konsole"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("xfce4-terminal"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("org.xfce.terminal"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("lxterminal"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("mate-terminal"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("terminator"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("tilix"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("com.gexperts.tilix"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("qterminal"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("terminology"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("sakura"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("alacritty"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("kitty"), PasteShortcut::ControlShiftV },
    // Wayland only: its app_id, and its client's.
    std::pair { QLatin1StringView("foot"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("footclient"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("org.wezfurlong.wezterm"), PasteShortcut::ControlShiftV },
    // st's class, whatever its terminfo name makes the instance.
    std::pair { QLatin1StringView("st"), PasteShortcut::ControlShiftV },
    std::pair { QLatin1StringView("urxvt"), PasteShortcut::ControlAltV },
    std::pair { QLatin1StringView("rxvt-unicode"), PasteShortcut::ControlAltV },
    std::pair { QLatin1StringView("xterm"), PasteShortcut::None },
    std::pair { QLatin1StringView("uxterm"), PasteShortcut::None },
};

} // namespace

PasteShortcut forApplication(const std::optional<QString> &identifier)
{
    if (!identifier)
        return PasteShortcut::ControlV;
    for (const auto &[name, shortcut] : terminals) {
        if (identifier->compare(name, Qt::CaseInsensitive) == 0)
            return shortcut;
    }
    return PasteShortcut::ControlV;
}

} // namespace PasteShortcuts
