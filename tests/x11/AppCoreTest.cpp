// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppCore.h"

#include "AppSettings.h"
#include "ClipboardWatcher.h"
#include "ClipPanel.h"
#include "MemoryClickMonitor.h"
#include "MemoryKeyGrabber.h"
#include "MemoryPasteboard.h"
#include "MemoryPasteKeystroke.h"
#include "MemoryWorkspace.h"
#include "ScriptedUpdateCheck.h"
#include "StatusMenu.h"
#include "UpdateDialog.h"
#include "UpdaterController.h"

#include <QAction>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

// The core on in-memory backends: what it builds, its menu and the update
// check it is given. The shortcut and the preferences window are driven on the
// real app.
TEST(AppCore, StartsEverythingWithItsMenu)
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
        { pasteboard, workspace, &keyGrabber, &clicks, workspace, keystroke }, updater);
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

    // The menu's check goes to the updater the core was given.
    core.checkUpdatesAction();
    EXPECT_EQ(updateCheck->started(), 1);
    ASSERT_TRUE(updater.dialog());
    EXPECT_TRUE(updater.dialog()->isVisible());
}
