// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipboardStore.h"
#include "PlatformServices.h"

#include <QObject>

#include <memory>

class AppSettings;
class ClipboardWatcher;
class GlobalHotKey;
class PanelController;
class PasteKeystroke;
class StatusMenu;
class UpdaterController;

// The running app: owns the history and every part that feeds or shows it,
// and carries out the tray menu's commands.
class AppCore : public QObject {
    Q_OBJECT

public:
    // Loads the history from historyDir. Nothing runs until start(), which
    // also starts the automatic checks of updater, which outlives the core.
    AppCore(AppSettings &settings, const QString &historyDir, PlatformServices platform, UpdaterController &updater,
        QObject *parent = nullptr);
    ~AppCore() override;

    // The started core, once start() has begun.
    static AppCore *shared();

    // Builds the hidden panel, starts watching the clipboard, registers the
    // shortcut, starts update checks and puts up the tray icon. Once.
    void start();
    // Registers the settings' shortcut again.
    void applyHotkey();

    ClipboardStore &store() { return m_store; }
    AppSettings &settings() const { return m_settings; }
    ClipboardWatcher *watcher() const { return m_watcher.get(); }
    PanelController *panelController() const { return m_panelController.get(); }
    GlobalHotKey *hotkey() const { return m_hotkey.get(); }
    StatusMenu &statusMenu() const { return *m_statusMenu; }
    // Types the paste shortcut into the window pasted into.
    PasteKeystroke &pasteKeystroke() const { return m_platform.pasteKeystroke; }

    // The tray menu's commands.
    void togglePanelAction();
    void openSettingsAction();
    void checkUpdatesAction();
    void quit();

private:
    AppSettings &m_settings;
    ClipboardStore m_store;
    PlatformServices m_platform;
    UpdaterController &m_updater;
    std::unique_ptr<PanelController> m_panelController;
    std::unique_ptr<ClipboardWatcher> m_watcher;
    std::unique_ptr<GlobalHotKey> m_hotkey;
    std::unique_ptr<StatusMenu> m_statusMenu;
};
