// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>

class QWidget;

// The one preferences window: built on first use, then kept and brought back
// to the front each time it is asked for; closing it only hides it.
class SettingsWindow {
public:
    static SettingsWindow &shared();

    void show();
    // The window once shown; null before.
    QWidget *window() const { return m_window; }

private:
    SettingsWindow() = default;

    QPointer<QWidget> m_window;
};
