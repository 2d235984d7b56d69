// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsWindow.h"

#include <QWidget>

SettingsWindow &SettingsWindow::shared()
{
    static SettingsWindow instance;
    return instance;
}

void SettingsWindow::show()
{
    if (!m_window) {
        // The tabs come with the preferences themselves; the window already
        // has its final frame.
        m_window = new QWidget;
        m_window->setWindowTitle(QStringLiteral("Zettly — Préférences"));
        m_window->resize(600, 440);
        m_window->setMinimumSize(540, 380);
    }
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}
