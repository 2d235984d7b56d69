// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ShortcutRecorder.h"

#include <QWidget>

class AppSettings;
class KeyLayout;
class QLabel;
class QPushButton;

// Shows the shortcut that opens the picker, records a new one from a key
// press, or puts back Ctrl+Super+V. Storing it in the settings is what
// registers it with the desktop.
class ShortcutTab : public QWidget {
    Q_OBJECT

public:
    // What makes the shortcut work in this session.
    enum class Route {
        // Our own key grab: nothing to say.
        KeyGrab,
        // The user binds `zettly --toggle` in the desktop's settings.
        DesktopCommand,
        // The desktop holds the shortcut, through its portal.
        Portal,
    };

    // A null layout shows keys outside the fixed names as "key(<code>)".
    ShortcutTab(AppSettings &settings, const KeyLayout *layout, QWidget *parent = nullptr);
    ~ShortcutTab() override;

    void setKeyLayout(const KeyLayout *layout);
    void setRoute(Route route);

    bool isRecording() const { return m_recorder.isRecording(); }
    QLabel *shortcutText() const { return m_shortcut; }
    QPushButton *recordButton() const { return m_recordButton; }
    QPushButton *resetButton() const { return m_resetButton; }
    QLabel *routeText() const { return m_route; }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void showShortcut();
    void showRecording(bool recording);

    AppSettings &m_settings;
    const KeyLayout *m_layout;
    ShortcutRecorder m_recorder;
    QLabel *m_shortcut;
    QPushButton *m_recordButton;
    QPushButton *m_resetButton;
    QLabel *m_route;
};
