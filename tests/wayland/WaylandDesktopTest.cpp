// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyWindow.h"
#include "KWinFakeInputKeystroke.h"
#include "WaylandPasteKeystroke.h"
#include "WaylandWorkspace.h"

#include <QTest>

#include <gtest/gtest.h>

namespace {

bool waitForFront(const WaylandWorkspace &workspace, const std::optional<QString> &identifier)
{
    return QTest::qWaitFor(
        [&] {
            const std::optional<RunningApp> front = workspace.frontmostApp();
            return identifier ? front && front->identifier == identifier : !front;
        },
        10000);
}

// The virtual keyboard under wlroots, KWin's fake input under KWin.
std::unique_ptr<PasteKeystroke> openPasteKeystroke()
{
    if (std::unique_ptr<WaylandPasteKeystroke> keyboard = WaylandPasteKeystroke::open();
        keyboard && keyboard->isTrusted())
        return keyboard;
    return KWinFakeInputKeystroke::open();
}

} // namespace

// The window in front follows the focus, keeps its id while it lives, can be
// brought back, and is forgotten once closed; ours identify as ours.
TEST(WaylandDesktop, FollowsTheWindowInFront)
{
    const auto workspace = WaylandWorkspace::open({ QStringLiteral("org.zettly.test.own") });
    ASSERT_TRUE(workspace);
    KeyWindow first(QStringLiteral("org.zettly.test.first"));
    ASSERT_TRUE(waitForFront(*workspace, QStringLiteral("org.zettly.test.first")));
    const RunningApp remembered = *workspace->frontmostApp();

    KeyWindow own(QStringLiteral("org.zettly.test.own"));
    ASSERT_TRUE(waitForFront(*workspace, Workspace::ownIdentifier));
    EXPECT_NE(workspace->frontmostApp()->windowId, remembered.windowId);

    workspace->activate(remembered);
    ASSERT_TRUE(waitForFront(*workspace, QStringLiteral("org.zettly.test.first")));
    EXPECT_EQ(workspace->frontmostApp(), remembered);

    first.close();
    ASSERT_TRUE(waitForFront(*workspace, Workspace::ownIdentifier));
    // Gone: asking for it again changes nothing.
    workspace->activate(remembered);
    own.close();
    EXPECT_TRUE(waitForFront(*workspace, std::nullopt));
}

// The paste keys reach the focused native window, with the modifiers its
// app_id calls for.
TEST(WaylandDesktop, PasteKeysReachTheFocusedWindow)
{
    // Made first, as in the app: the windows then start with a keyboard on
    // the seat.
    const auto keystroke = openPasteKeystroke();
    ASSERT_TRUE(keystroke);
    ASSERT_TRUE(keystroke->isTrusted());
    const auto workspace = WaylandWorkspace::open();
    ASSERT_TRUE(workspace);
    const struct {
        QString appId;
        QByteArray received;
    } rows[] = {
        { QStringLiteral("org.zettly.test.editor"), "Ctrl+V" },
        { QStringLiteral("foot"), "Ctrl+Shift+V" },
    };
    for (const auto &row : rows) {
        KeyWindow window(row.appId);
        ASSERT_TRUE(waitForFront(*workspace, row.appId)) << qPrintable(row.appId);
        ASSERT_TRUE(window.waitForLine("focus")) << qPrintable(row.appId);
        keystroke->sendPaste(*workspace->frontmostApp());
        EXPECT_TRUE(window.waitForLine(row.received)) << qPrintable(row.appId);
    }
}
