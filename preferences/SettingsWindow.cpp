// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsWindow.h"

#include "AboutTab.h"
#include "ClipboardStore.h"
#include "GeneralTab.h"
#include "SettingsView.h"
#include "ShortcutTab.h"
#include "UpdaterController.h"
#include "WindowActivation.h"

#include <QGuiApplication>
#include <QScreen>

SettingsWindow &SettingsWindow::shared()
{
    static SettingsWindow instance;
    return instance;
}

void SettingsWindow::setModel(AppSettings &settings, ClipboardStore &store)
{
    if (m_window && (m_settings != &settings || m_store != &store))
        delete m_window;
    m_settings = &settings;
    m_store = &store;
}

void SettingsWindow::setPasteKeystroke(const PasteKeystroke *keystroke)
{
    m_keystroke = keystroke;
    if (m_window)
        m_window->generalTab()->setPasteKeystroke(keystroke);
}

void SettingsWindow::setKeyLayout(const KeyLayout *layout)
{
    m_layout = layout;
    if (m_window)
        m_window->shortcutTab()->setKeyLayout(layout);
}

void SettingsWindow::setShortcutRoute(ShortcutTab::Route route)
{
    m_route = route;
    if (m_window)
        m_window->shortcutTab()->setRoute(route);
}

void SettingsWindow::setWindowActivation(WindowActivation *activation)
{
    m_activation = activation;
}

void SettingsWindow::show()
{
    if (!m_settings || !m_store)
        return;
    if (!m_window) {
        m_window = new SettingsView(*m_settings, *m_store, m_keystroke, m_layout);
        m_window->shortcutTab()->setRoute(m_route);
        QObject::connect(m_window->aboutTab(), &AboutTab::updateCheckRequested, m_window,
            [] { UpdaterController::shared().checkForUpdates(); });
        // Gone with its store, when a test's core goes.
        QObject::connect(m_store, &QObject::destroyed, m_window, &QObject::deleteLater);
        if (const QScreen *screen = QGuiApplication::primaryScreen()) {
            QRect frame(QPoint(), m_window->size());
            frame.moveCenter(screen->availableGeometry().center());
            m_window->move(frame.topLeft());
        }
    }
    m_window->showNormal();
    m_window->raise();
    m_window->activateWindow();
    if (m_activation)
        m_activation->activate(m_window->winId());
}
