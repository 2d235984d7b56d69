// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusMenu.h"

#include "AppCore.h"

#include <QCursor>
#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QGuiApplication>
#include <QIcon>

StatusMenu::StatusMenu(AppCore &core)
{
    // Ctrl stands where a Mac menu shows Command; the keys only label the
    // items, as a tray menu has no shortcuts of its own.
    m_menu.addAction(
        QStringLiteral("Ouvrir Zettly"), QKeySequence(QStringLiteral("Ctrl+V")), &core, &AppCore::togglePanelAction);
    m_menu.addSeparator();
    m_menu.addAction(
        QStringLiteral("Préférences…"), QKeySequence(QStringLiteral("Ctrl+,")), &core, &AppCore::openSettingsAction);
    m_menu.addAction(QStringLiteral("Rechercher les mises à jour…"), &core, &AppCore::checkUpdatesAction);
    m_menu.addSeparator();
    m_menu.addAction(QStringLiteral("Quitter Zettly"), QKeySequence(QStringLiteral("Ctrl+Q")), &core, &AppCore::quit);

    // The theme's clipboard, else the icon installed with the app.
    m_trayIcon.setIcon(QIcon::fromTheme(QStringLiteral("edit-paste"),
        QIcon::fromTheme(QStringLiteral("com.marovelin.zettly"), QIcon(QStringLiteral(":/icons/zettly.svg")))));
    m_trayIcon.setToolTip(QStringLiteral("Zettly"));
    m_trayIcon.setContextMenu(&m_menu);
    // A left click opens the same menu as a right click: a tray icon has
    // nothing else to show. A second click soon after the menu closed comes
    // as a double click, and must open it too.
    QObject::connect(
        &m_trayIcon, &QSystemTrayIcon::activated, &m_menu, [this](QSystemTrayIcon::ActivationReason reason) {
            const bool leftClick = reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick;
            if (leftClick && !m_menu.isVisible())
                m_menu.popup(QCursor::pos());
        });
    // Qt's X11 tray waits for a tray to appear; elsewhere only a
    // StatusNotifier host can show the icon, and the X11 stand-in Qt would
    // fall back to cannot work, so the icon waits for the host.
    if (QGuiApplication::platformName() == u"xcb" || QSystemTrayIcon::isSystemTrayAvailable()) {
        m_trayIcon.show();
        return;
    }
    m_hostWatcher = std::make_unique<QDBusServiceWatcher>(QStringLiteral("org.kde.StatusNotifierWatcher"),
        QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(m_hostWatcher.get(), &QDBusServiceWatcher::serviceRegistered, &m_menu, [this] {
        if (QSystemTrayIcon::isSystemTrayAvailable())
            m_trayIcon.show();
    });
}

StatusMenu::~StatusMenu() = default;
