// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "SettingsView.h"
#include "ShortcutTab.h"

#include <QPointer>

class AppSettings;
class ClipboardStore;
class KeyLayout;
class PasteKeystroke;
class WindowActivation;

// The one preferences window: built on first use, then kept and brought back
// to the front each time it is asked for, whatever application is active;
// closing it only hides it, so it comes back where it was.
class SettingsWindow {
public:
    static SettingsWindow &shared();

    // What the window shows and edits; the running app sets them before the
    // first show(). Without a store, show() does nothing.
    void setModel(AppSettings &settings, ClipboardStore &store);
    // Whether pastes can be typed; none reads as not permitted.
    void setPasteKeystroke(const PasteKeystroke *keystroke);
    // Names the shortcut's key; without one keys show by number.
    void setKeyLayout(const KeyLayout *layout);
    // What the Shortcut tab says makes the shortcut work.
    void setShortcutRoute(ShortcutTab::Route route);
    // Without one, the window only asks to be raised, which a window
    // manager may refuse while another application is active.
    void setWindowActivation(WindowActivation *activation);

    void show();
    // The window once shown; null before.
    SettingsView *window() const { return m_window; }

private:
    SettingsWindow() = default;

    AppSettings *m_settings = nullptr;
    QPointer<ClipboardStore> m_store;
    const PasteKeystroke *m_keystroke = nullptr;
    const KeyLayout *m_layout = nullptr;
    ShortcutTab::Route m_route = ShortcutTab::Route::KeyGrab;
    WindowActivation *m_activation = nullptr;
    QPointer<SettingsView> m_window;
};
