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
#include "SettingsWindow.h"
#include "StatusMenu.h"

#include <QAction>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

// The core on in-memory backends: what it builds, its menu, and the shortcut
// toggling the panel and following the settings.
TEST(AppCore, StartsEverythingAndFollowsTheShortcutSetting)
{
    QTemporaryDir home;
    AppSettings settings(home.filePath(QStringLiteral("defaults.json")));
    MemoryPasteboard pasteboard;
    MemoryWorkspace workspace;
    MemoryKeyGrabber keyGrabber;
    MemoryClickMonitor clicks;
    MemoryPasteKeystroke keystroke;
    AppCore core(settings, home.filePath(QStringLiteral("Zettly")),
        { pasteboard, workspace, keyGrabber, clicks, workspace, keystroke });
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

    // Ctrl+Super+V, one turn after the press.
    const MemoryKeyGrabber::Combination standard { 9, 4352 };
    ASSERT_EQ(keyGrabber.grabbed(), standard);
    keyGrabber.press(standard);
    EXPECT_FALSE(core.panelController()->isShown());
    ASSERT_TRUE(QTest::qWaitFor([&] { return core.panelController()->isShown(); }, 2000));
    keyGrabber.press(standard);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !core.panelController()->isShown(); }, 2000));

    // A new shortcut takes over at once; the old one does nothing.
    settings.setHotkey({ .keyCode = 8, .modifiers = 4352 });
    const MemoryKeyGrabber::Combination changed { 8, 4352 };
    EXPECT_EQ(keyGrabber.grabbed(), changed);
    keyGrabber.press(standard);
    QTest::qWait(50);
    EXPECT_FALSE(core.panelController()->isShown());
    keyGrabber.press(changed);
    EXPECT_TRUE(QTest::qWaitFor([&] { return core.panelController()->isShown(); }, 2000));
    // Clicks are watched only while the panel is up; one beside it (the
    // pointer is never over the panel, which opens beside it) hides it.
    EXPECT_TRUE(clicks.isStarted());
    clicks.click();
    EXPECT_FALSE(core.panelController()->isShown());
    EXPECT_FALSE(clicks.isStarted());

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
