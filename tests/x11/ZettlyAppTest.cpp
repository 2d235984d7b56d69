// SPDX-License-Identifier: GPL-3.0-or-later
#include "OtherClient.h"
#include "RunningZettly.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>

#include <csignal>

// One copy per session: a second one ends at once and quietly, the first
// goes on. The shortcut opens the first one's panel beside the pointer, inside
// the screen; a click on the bare desktop, which moves no focus, hides it. A
// copy that crashed does not keep the next one from starting, nor does a
// shortcut another program holds: that copy runs without one.
TEST(ZettlyApp, RunsOnceAndRecoversFromACrash)
{
    RunningZettly zettly;
    QProcess &first = zettly.start();
    ASSERT_TRUE(zettly.waitUntilRecording());

    QProcess &second = zettly.start();
    ASSERT_TRUE(eventually([&] { return second.state() == QProcess::NotRunning; }));
    EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second.exitCode(), 0);
    XClip::copy("toujours là");
    EXPECT_TRUE(zettly.waitForNewest(QStringLiteral("toujours là")));
    OtherClient other;
    // Xvfb's screen is 1280 × 800: no room below or to the right, so above
    // the pointer, 8 px inside.
    ASSERT_TRUE(XDoTool::moveTo({ 1270, 790 }));
    ASSERT_TRUE(XDoTool::pressShortcut());
    EXPECT_TRUE(eventually([&] { return panelOf(other, first).value_or(QRect()).topLeft() == QPoint(912, 302); }));
    ASSERT_TRUE(XDoTool::click({ 200, 700 }));
    EXPECT_TRUE(eventually([&] { return !panelOf(other, first); }));

    ::kill(static_cast<pid_t>(first.processId()), SIGKILL);
    ASSERT_TRUE(first.waitForFinished(5000));
    // Control and Super, on the key that types v under Xvfb.
    ASSERT_TRUE(other.grabKey(55, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_4));
    QProcess &next = zettly.start();
    ASSERT_TRUE(zettly.waitUntilRecording());
    ASSERT_TRUE(XDoTool::pressShortcut());
    // The press went to the program holding the keys: a key grabbed by one
    // client reaches no other.
    EXPECT_TRUE(eventually([&] { return other.takeEvents().contains(XCB_KEY_PRESS); }));
    EXPECT_FALSE(panelOf(other, next));
    EXPECT_EQ(next.state(), QProcess::Running);
}

// zettly --toggle, --show and --hide drive the running copy's panel and end;
// with no copy running, or no display, they say so in one line.
TEST(ZettlyApp, CommandLineDrivesTheRunningPanel)
{
    RunningZettly zettly;
    const auto run = [&](const char *option, const QStringList &unset = {}) {
        return zettly.run(*option ? QStringList { QString::fromLatin1(option) } : QStringList(), unset);
    };
    const struct {
        const char *option;
        QStringList unset;
        const char *said;
    } failures[] = { { "--toggle", {}, "zettly : " }, { "--inconnue", {}, "zettly : " },
        { "", { QStringLiteral("DISPLAY") }, "DISPLAY" } };
    for (const auto &failure : failures) {
        SCOPED_TRACE(*failure.option ? failure.option : "without a display");
        const auto [exitCode, error] = run(failure.option, failure.unset);
        EXPECT_EQ(exitCode, 1);
        EXPECT_EQ(error.count('\n'), 0) << error.constData();
        EXPECT_TRUE(error.startsWith("zettly : ") && error.contains(failure.said)) << error.constData();
    }

    QProcess &app = zettly.start();
    ASSERT_TRUE(zettly.waitUntilRecording());
    OtherClient display;
    // Each command that should change nothing is followed by one whose
    // outcome it would have spoiled.
    const struct {
        const char *option;
        bool shown;
    } steps[] = {
        { "--toggle", true },
        { "--toggle", false },
        { "--hide", false },
        { "--toggle", true },
        { "--show", true },
        { "--hide", false },
        { "--show", true },
        { "--toggle", false },
    };
    for (const auto &step : steps) {
        const auto [exitCode, error] = run(step.option);
        EXPECT_EQ(exitCode, 0) << step.option << ' ' << error.constData();
        EXPECT_TRUE(eventually([&] { return panelOf(display, app).has_value() == step.shown; })) << step.option;
    }
    EXPECT_EQ(app.state(), QProcess::Running);
}
