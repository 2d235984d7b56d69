// SPDX-License-Identifier: GPL-3.0-or-later
#include "PasswordManagers.h"

const QSet<QString> &PasswordManagers::identifiers()
{
    static const QSet<QString> ids = {
        // macOS bundle identifiers.
        QStringLiteral("com.agilebits.onepassword7"),
        QStringLiteral("com.agilebits.onepassword-osx"),
        QStringLiteral("com.lastpass.LastPass"),
        QStringLiteral("com.bitwarden.desktop"),
        QStringLiteral("com.apple.keychainaccess"),
        // KeePassXC: the Qt window class; the desktop-entry id under Plasma
        // and as a Flatpak.
        QStringLiteral("KeePassXC"),
        QStringLiteral("org.keepassxc.KeePassXC"),
        // Bitwarden (Electron): window class and desktop entry; its Flatpak
        // id is the macOS one above.
        QStringLiteral("Bitwarden"),
        QStringLiteral("bitwarden"),
        // 1Password: window class and desktop entry.
        QStringLiteral("1Password"),
        QStringLiteral("1password"),
        // Seahorse: its application id, and the class for windows that
        // carry no id.
        QStringLiteral("org.gnome.seahorse.Application"),
        QStringLiteral("Seahorse"),
        // GNOME Secrets: the same; its class is in lower case.
        QStringLiteral("org.gnome.World.Secrets"),
        QStringLiteral("secrets"),
        // KWalletManager: class and desktop entry, before and after the
        // move to Qt 6 dropped the 5.
        QStringLiteral("kwalletmanager5"),
        QStringLiteral("org.kde.kwalletmanager5"),
        QStringLiteral("kwalletmanager"),
        QStringLiteral("org.kde.kwalletmanager"),
    };
    return ids;
}
