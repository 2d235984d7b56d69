// SPDX-License-Identifier: GPL-3.0-or-later
#include "KWinFakeInputKeystroke.h"
#include "WaylandPasteKeystroke.h"
#include "WaylandPrograms.h"
#include "WaylandWorkspace.h"

#include <gtest/gtest.h>

namespace {

// The virtual keyboard under wlroots, KWin's fake input under KWin.
std::unique_ptr<PasteKeystroke> openPasteKeystroke()
{
    if (std::unique_ptr<WaylandPasteKeystroke> keyboard = WaylandPasteKeystroke::open();
        keyboard && keyboard->isTrusted())
        return keyboard;
    return KWinFakeInputKeystroke::open();
}

} // namespace

// A closed window is forgotten: asking for it again harms nothing, and the
// windows after it are still followed. (The app's tests show the window in
// front followed, ours named as ours, and brought back.)
TEST(WaylandDesktop, ForgetsAClosedWindow)
{
    const auto workspace = WaylandWorkspace::open();
    ASSERT_TRUE(workspace);
    KeyWindow first(QStringLiteral("org.zettly.test.first"));
    ASSERT_TRUE(waitForFront(*workspace, QStringLiteral("org.zettly.test.first")));
    const RunningApp gone = *workspace->frontmostApp();
    first.close();
    ASSERT_TRUE(waitForFront(*workspace, std::nullopt));
    workspace->activate(gone);
    KeyWindow second(QStringLiteral("org.zettly.test.second"));
    EXPECT_TRUE(waitForFront(*workspace, QStringLiteral("org.zettly.test.second")));
    EXPECT_NE(workspace->frontmostApp()->windowId, gone.windowId);
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
