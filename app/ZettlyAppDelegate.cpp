// SPDX-License-Identifier: GPL-3.0-or-later
#include "ZettlyAppDelegate.h"

#include "AppCore.h"
#include "AppSettings.h"
#include "HistoryFolder.h"
#include "HotKeyTranslator.h"
#include "PanelController.h"
#include "Pasteboard.h"
#include "SettingsWindow.h"
#include "UpdaterController.h"
#include "WorkspaceWindowActivation.h"
#include "XkbKeyLayout.h"

#include <malloc.h>

ZettlyAppDelegate::ZettlyAppDelegate() = default;

ZettlyAppDelegate::~ZettlyAppDelegate()
{
    // The preferences window outlives the backends it was lent.
    if (m_core) {
        SettingsWindow::shared().setKeyLayout(nullptr);
        SettingsWindow::shared().setWindowActivation(nullptr);
    }
}

bool ZettlyAppDelegate::applicationDidFinishLaunching()
{
    // Before the history is opened: loading tidies the folder, which must not
    // happen under the running copy's feet.
    if (!m_instanceLock.tryLock())
        return false;
    m_backends = openSessionBackends();
    m_core = std::make_unique<AppCore>(AppSettings::shared(), HistoryFolder::standardPath(),
        PlatformServices { *m_backends.pasteboard, *m_backends.workspace, m_backends.keyGrabber.get(),
            m_backends.clickMonitor.get(), *m_backends.desktopWindows, *m_backends.pasteKeystroke },
        UpdaterController::shared());
    m_core->start();
    QObject::connect(&m_channel, &InstanceChannel::commandReceived, &m_channel,
        [this](InstanceChannel::Command command) { onCommandReceived(command); });
    m_channel.listen();
    m_keyLayout = XkbKeyLayout::open();
    m_windowActivation = std::make_unique<WorkspaceWindowActivation>(*m_backends.desktopWindows);
    SettingsWindow::shared().setKeyLayout(m_keyLayout.get());
    SettingsWindow::shared().setWindowActivation(m_windowActivation.get());
    startShortcutsPortal();
    // Decoding the history file peaks at several times its size; give what
    // the allocator kept back to the system, as Zettly then idles for hours.
    malloc_trim(0);
    return true;
}

void ZettlyAppDelegate::startShortcutsPortal()
{
    GlobalShortcutsPortal *portal = m_backends.shortcutsPortal.get();
    if (!portal)
        return;
    // Until the desktop holds it, the user binds the command.
    SettingsWindow::shared().setShortcutRoute(ShortcutTab::Route::DesktopCommand);
    const auto trigger = [this] {
        const HotKeyConfig shortcut = AppSettings::shared().hotkey();
        return HotKeyTranslator::shortcutString(shortcut.keyCode, shortcut.modifiers, m_keyLayout.get())
            .value_or(QString());
    };
    QObject::connect(portal, &GlobalShortcutsPortal::activated, m_core.get(), &AppCore::togglePanelAction);
    QObject::connect(portal, &GlobalShortcutsPortal::stateChanged, portal, [](GlobalShortcutsPortal::State state) {
        SettingsWindow::shared().setShortcutRoute(state == GlobalShortcutsPortal::State::Bound
                ? ShortcutTab::Route::Portal
                : ShortcutTab::Route::DesktopCommand);
    });
    QObject::connect(&AppSettings::shared(), &AppSettings::hotkeyChanged, portal,
        [portal, trigger] { portal->setPreferredTrigger(trigger()); });
    portal->start(trigger());
}

void ZettlyAppDelegate::onCommandReceived(InstanceChannel::Command command)
{
    PanelController *panel = m_core->panelController();
    const bool show = command == InstanceChannel::Command::Show
        || (command == InstanceChannel::Command::Toggle && !panel->isShown());
    if (show == panel->isShown())
        return;
    if (show)
        panel->showNearCursor();
    else
        panel->hide();
}
