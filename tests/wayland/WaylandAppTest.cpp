// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandPasteboard.h"
#include "WaylandPrograms.h"
#include "WaylandWorkspace.h"

#include "PasteboardTypes.h"
#include "RunningZettly.h"

#include <QMimeData>
#include <QTest>

#include <gtest/gtest.h>

// Copies made by native Wayland programs land in the history while no window
// of Zettly's exists (what each is read as, the pasteboard's test shows); a
// secret does not, nor a copy made while a password manager's window is in
// front.
TEST(WaylandApp, RecordsNativeCopiesWithoutFocus)
{
    RunningZettly app;
    QProcess &process = app.start();
    ASSERT_TRUE(app.waitUntilRecording());

    // A password manager's copy, several types at once, then a plain one: the
    // plain one is the next entry.
    const auto passwordManager = WaylandPasteboard::open();
    ASSERT_TRUE(passwordManager);
    auto *secret = new QMimeData;
    secret->setText(QStringLiteral("hunter2 sous Wayland"));
    secret->setData(PasteboardTypes::passwordManagerHint, "secret");
    passwordManager->write(secret);
    ASSERT_EQ(WlClipboard::paste(PasteboardTypes::passwordManagerHint), "secret");
    ASSERT_TRUE(WlClipboard::copy("après le secret"));
    EXPECT_TRUE(app.waitForNewest(QStringLiteral("après le secret")));
    EXPECT_TRUE(app.waitForLog("marked secret"));

    // A plain copy while KeePassXC's window has the focus.
    const auto workspace = WaylandWorkspace::open();
    ASSERT_TRUE(workspace);
    {
        KeyWindow keePass(QStringLiteral("org.keepassxc.KeePassXC"));
        ASSERT_TRUE(waitForFront(*workspace, QStringLiteral("org.keepassxc.KeePassXC")));
        ASSERT_TRUE(WlClipboard::copy("copié devant KeePassXC"));
        // Handled while the window is still in front.
        EXPECT_TRUE(app.waitForLog("password manager is in front"));
    }
    ASSERT_TRUE(waitForFront(*workspace, std::nullopt));
    ASSERT_TRUE(WlClipboard::copy("après KeePassXC"));
    EXPECT_TRUE(app.waitForNewest(QStringLiteral("après KeePassXC")));
    EXPECT_FALSE(app.savedTexts().contains(QStringLiteral("hunter2 sous Wayland")));
    EXPECT_FALSE(app.savedTexts().contains(QStringLiteral("copié devant KeePassXC")));
    EXPECT_EQ(process.state(), QProcess::Running);
}

// The picker, a native window, opens on the command, filters as the user
// types, and Return pastes the chosen entry into the native window that was
// in front: activated again through the compositor, then given Ctrl+V by the
// app's virtual keyboard.
TEST(WaylandApp, PastesIntoTheWindowThatWasInFront)
{
    const auto workspace = WaylandWorkspace::open();
    ASSERT_TRUE(workspace);
    const QString target = QStringLiteral("org.zettly.test.target");
    KeyWindow targetWindow(target);
    ASSERT_TRUE(waitForFront(*workspace, target));
    RunningZettly app;
    app.start();
    ASSERT_TRUE(app.waitUntilRecording());
    for (const char *text : { "premier choix", "second choix" }) {
        ASSERT_TRUE(WlClipboard::copy(text));
        ASSERT_TRUE(app.waitForNewest(QString::fromUtf8(text)));
    }
    const auto toggle = [&] { return app.run({ QStringLiteral("--toggle") }).first == 0; };
    const auto wtype
        = [](const QStringList &arguments) { return QProcess::execute(QStringLiteral("wtype"), arguments) == 0; };

    ASSERT_TRUE(toggle());
    ASSERT_TRUE(waitForFront(*workspace, Workspace::ownIdentifier));
    // Even were its first letter lost, the filter matches one entry alone.
    ASSERT_TRUE(wtype({ QStringLiteral("premier") }));
    ASSERT_TRUE(wtype({ QStringLiteral("-k"), QStringLiteral("Return") }));
    EXPECT_TRUE(targetWindow.waitForLine("Ctrl+V"));
    EXPECT_EQ(workspace->frontmostApp()->identifier, target);
    EXPECT_EQ(WlClipboard::paste(QStringLiteral("text/plain;charset=utf-8")), "premier choix");

    // Escape hides it again without pasting; focus goes back to the target.
    ASSERT_TRUE(toggle());
    ASSERT_TRUE(waitForFront(*workspace, Workspace::ownIdentifier));
    ASSERT_TRUE(wtype({ QStringLiteral("-k"), QStringLiteral("Escape") }));
    EXPECT_TRUE(waitForFront(*workspace, target));

    // Another window taking the focus hides it too: the next toggle shows
    // it rather than hiding it.
    ASSERT_TRUE(toggle());
    ASSERT_TRUE(waitForFront(*workspace, Workspace::ownIdentifier));
    ASSERT_EQ(QProcess::execute(QStringLiteral("swaymsg"), { QStringLiteral("[app_id=%1] focus").arg(target) }), 0);
    ASSERT_TRUE(waitForFront(*workspace, target));
    ASSERT_TRUE(toggle());
    EXPECT_TRUE(waitForFront(*workspace, Workspace::ownIdentifier));
}
