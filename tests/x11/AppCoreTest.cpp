// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppCore.h"

#include "AppSettings.h"
#include "ClipboardWatcher.h"
#include "ClipPanel.h"
#include "GlobalHotKey.h"
#include "MemoryClickMonitor.h"
#include "MemoryKeyGrabber.h"
#include "MemoryPasteboard.h"
#include "MemoryPasteKeystroke.h"
#include "MemoryWorkspace.h"
#include "PanelController.h"
#include "ScriptedUpdateCheck.h"
#include "SettingsWindow.h"
#include "StatusMenu.h"
#include "UpdateDialog.h"
#include "UpdaterController.h"

#include <QAction>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

// The core on in-memory backends: what it builds, its menu, the shortcut
// following the settings, and the menu's commands.
TEST(AppCore, StartsEverythingAndFollowsTheShortcutSetting)
{
    QTemporaryDir home;
    AppSettings settings(home.filePath(QStringLiteral("defaults.json")));
    MemoryPasteboard pasteboard;
    MemoryWorkspace workspace;
    MemoryKeyGrabber keyGrabber;
    MemoryClickMonitor clicks;
    MemoryPasteKeystroke keystroke;
    auto *updateCheck = new ScriptedUpdateCheck;
    UpdaterController updater(
        updateCheck, QStringLiteral("5"), QStringLiteral("1.0"), UpdaterController::AutomaticChecks::Off);
    AppCore core(settings, home.filePath(QStringLiteral("Zettly")),
        { pasteboard, workspace, keyGrabber, clicks, workspace, keystroke }, updater);
    EXPECT_EQ(AppCore::shared(), nullptr);
    core.start();
    EXPECT_EQ(AppCore::shared(), &core);
    ASSERT_TRUE(core.watcher() && core.panelController() && core.hotkey());

    QStringList titles;
    QStringList keys;
    for (const QAction *action : core.statusMenu().menu().actions()) {
        titles.append(action->isSeparator() ? QStringLiteral("—") : action->text());
        keys.append(action->shortcut().toString());
    }
    EXPECT_EQ(titles,
        (QStringList { QStringLiteral("Ouvrir Zettly"), QStringLiteral("—"), QStringLiteral("Préférences…"),
            QStringLiteral("Rechercher les mises à jour…"), QStringLiteral("—"), QStringLiteral("Quitter Zettly") }));
    EXPECT_EQ(keys,
        (QStringList { QStringLiteral("Ctrl+V"), {}, QStringLiteral("Ctrl+,"), {}, {}, QStringLiteral("Ctrl+Q") }));

    // The default shortcut toggling the panel, and a click hiding it, are
    // checked on the real app (ZettlyAppTest). A new shortcut takes over at
    // once; the old one does nothing.
    const MemoryKeyGrabber::Combination standard { 9, 4352 };
    ASSERT_EQ(keyGrabber.grabbed(), standard);
    settings.setHotkey({ .keyCode = 8, .modifiers = 4352 });
    const MemoryKeyGrabber::Combination changed { 8, 4352 };
    EXPECT_EQ(keyGrabber.grabbed(), changed);
    keyGrabber.press(standard);
    // The press would be handled one turn later.
    QCoreApplication::processEvents();
    EXPECT_FALSE(core.panelController()->isShown());
    keyGrabber.press(changed);
    EXPECT_TRUE(QTest::qWaitFor([&] { return core.panelController()->isShown(); }, 2000));

    // The menu's check goes to the updater the core was given.
    core.checkUpdatesAction();
    EXPECT_EQ(updateCheck->started(), 1);
    ASSERT_TRUE(updater.dialog());
    EXPECT_TRUE(updater.dialog()->isVisible());

    // One preferences window, brought back rather than built again.
    core.openSettingsAction();
    QWidget *preferences = SettingsWindow::shared().window();
    ASSERT_TRUE(preferences);
    EXPECT_EQ(preferences->windowTitle(), QStringLiteral("Zettly — Préférences"));
    preferences->close();
    core.openSettingsAction();
    EXPECT_EQ(SettingsWindow::shared().window(), preferences);
    EXPECT_TRUE(preferences->isVisible());
}
