// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>
#include <QSystemTrayIcon>

#include <memory>

class QDBusServiceWatcher;
class AppCore;

// The tray icon and its menu. Without a tray host the icon silently does not
// appear until one starts; the shortcut still opens the picker.
class StatusMenu {
public:
    explicit StatusMenu(AppCore &core);
    ~StatusMenu();

    QMenu &menu() { return m_menu; }
    QSystemTrayIcon &trayIcon() { return m_trayIcon; }

private:
    QMenu m_menu;
    QSystemTrayIcon m_trayIcon;
    // Where a StatusNotifier host is the only tray, until one starts.
    std::unique_ptr<QDBusServiceWatcher> m_hostWatcher;
};
