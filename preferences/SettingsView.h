// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AboutTab;
class AppSettings;
class ClipboardStore;
class GeneralTab;
class KeyLayout;
class PasteKeystroke;
class PrivacyTab;
class QTabWidget;
class ShortcutTab;

// The preferences window itself: its four tabs, General, Shortcut, Privacy
// and About. Closing it only hides it.
class SettingsView : public QWidget {
    Q_OBJECT

public:
    static constexpr QSize initialSize { 600, 440 };
    static constexpr QSize smallestSize { 540, 380 };

    SettingsView(AppSettings &settings, ClipboardStore &store, const PasteKeystroke *keystroke, const KeyLayout *layout,
        QWidget *parent = nullptr);

    QTabWidget *tabs() const { return m_tabs; }
    GeneralTab *generalTab() const { return m_general; }
    ShortcutTab *shortcutTab() const { return m_shortcut; }
    PrivacyTab *privacyTab() const { return m_privacy; }
    AboutTab *aboutTab() const { return m_about; }

private:
    QTabWidget *m_tabs;
    GeneralTab *m_general;
    ShortcutTab *m_shortcut;
    PrivacyTab *m_privacy;
    AboutTab *m_about;
};
