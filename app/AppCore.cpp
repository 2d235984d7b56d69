// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppCore.h"

#include "AppSettings.h"
#include "ClipboardWatcher.h"
#include "ContentView.h"
#include "GlobalHotKey.h"
#include "PanelController.h"
#include "SettingsWindow.h"
#include "StatusMenu.h"
#include "UpdaterController.h"

#include <QCoreApplication>
#include <QPointer>

namespace {

QPointer<AppCore> sharedCore;

} // namespace

AppCore::AppCore(AppSettings &settings, const QString &historyDir, PlatformServices platform,
    UpdaterController &updater, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_store(settings, historyDir)
    , m_platform(platform)
    , m_updater(updater)
{
}

AppCore::~AppCore()
{
    // The preferences window outlives the keystroke it was lent.
    if (m_panelController)
        SettingsWindow::shared().setPasteKeystroke(nullptr);
}

AppCore *AppCore::shared()
{
    return sharedCore;
}

void AppCore::start()
{
    sharedCore = this;
    auto *picker = new ContentView(m_store, m_settings);
    m_panelController = std::make_unique<PanelController>(picker, m_platform.workspace, m_platform.desktopWindows);
    if (m_platform.clickMonitor)
        m_panelController->setClickMonitor(m_platform.clickMonitor);
    m_watcher = std::make_unique<ClipboardWatcher>(m_platform.pasteboard, m_platform.workspace, m_store, m_settings);
    m_watcher->start();
    picker->setPanelController(m_panelController.get());
    picker->setDesktopWindows(&m_platform.desktopWindows);
    picker->setPasteKeystroke(&m_platform.pasteKeystroke);
    picker->setWatcher(m_watcher.get());
    if (m_platform.keyGrabber)
        m_hotkey = std::make_unique<GlobalHotKey>(*m_platform.keyGrabber);
    applyHotkey();
    connect(&m_settings, &AppSettings::hotkeyChanged, this, &AppCore::applyHotkey);
    m_updater.startAutomaticChecks();
    m_statusMenu = std::make_unique<StatusMenu>(*this);
    SettingsWindow::shared().setModel(m_settings, m_store);
    SettingsWindow::shared().setPasteKeystroke(&m_platform.pasteKeystroke);
}

void AppCore::applyHotkey()
{
    if (!m_hotkey)
        return;
    const HotKeyConfig shortcut = m_settings.hotkey();
    m_hotkey->registerHotKey(shortcut.keyCode, shortcut.modifiers, [core = QPointer<AppCore>(this)] {
        if (core)
            core->togglePanelAction();
    });
}

void AppCore::togglePanelAction()
{
    if (!m_panelController)
        return;
    if (m_panelController->isShown())
        m_panelController->hide();
    else
        m_panelController->showNearCursor();
}

void AppCore::openSettingsAction()
{
    SettingsWindow::shared().show();
}

void AppCore::checkUpdatesAction()
{
    m_updater.checkForUpdates();
}

void AppCore::quit()
{
    QCoreApplication::quit();
}
