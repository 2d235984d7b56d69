// SPDX-License-Identifier: GPL-3.0-or-later
#include "OtherClient.h"
#include "RunningZettly.h"
#include "XClip.h"
#include "XDoTool.h"

#include <QTest>

#include <gtest/gtest.h>

#include <csignal>
#include <optional>

namespace {

bool pressShortcut()
{
    return XDoTool::key({ QStringLiteral("ctrl+super+v") });
}

constexpr auto panelOf = &RunningZettly::panelOf;

} // namespace

// One copy per session: a second one ends at once and quietly, the first
// goes on; a copy that crashed does not keep the next one from starting.
TEST(ZettlyApp, RunsOnceAndRecoversFromACrash)
{
    RunningZettly zettly;
    QProcess &first = zettly.start();
    ASSERT_TRUE(zettly.waitUntilRecording());

    QProcess &second = zettly.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return second.state() == QProcess::NotRunning; }, 5000));
    EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second.exitCode(), 0);
    XClip::copy("toujours là");
    EXPECT_TRUE(zettly.waitForNewest(QStringLiteral("toujours là")));
    OtherClient display;
    ASSERT_TRUE(pressShortcut());
    EXPECT_TRUE(QTest::qWaitFor([&] { return panelOf(display, first).has_value(); }, 5000));

    ::kill(static_cast<pid_t>(first.processId()), SIGKILL);
    ASSERT_TRUE(first.waitForFinished(5000));
    QProcess &next = zettly.start();
    ASSERT_TRUE(zettly.waitUntilRecording());
    EXPECT_EQ(next.state(), QProcess::Running);
}

TEST(ZettlyApp, SaysSoWithoutADisplay)
{
    RunningZettly zettly;
    QProcessEnvironment environment = zettly.environment();
    environment.remove(QStringLiteral("DISPLAY"));
    QProcess app;
    app.setProcessEnvironment(environment);
    app.start(QStringLiteral(ZETTLY_APP_PATH), {});
    ASSERT_TRUE(app.waitForFinished(10000));
    EXPECT_EQ(app.exitCode(), 1);
    const QList<QByteArray> lines = app.readAllStandardError().trimmed().split('\n');
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.first().contains("DISPLAY"));
}

// The shortcut opens the panel beside the pointer, inside the screen, and
// closes it again; so does a click on the bare desktop.
TEST(ZettlyApp, ShortcutTogglesThePanelBesideThePointer)
{
    RunningZettly zettly;
    QProcess &app = zettly.start();
    ASSERT_TRUE(zettly.waitUntilRecording());
    OtherClient display;
    const auto waitForPanel = [&](std::optional<QPoint> topLeft) {
        return QTest::qWaitFor(
            [&] {
                const auto panel = panelOf(display, app);
                return topLeft ? panel && panel->topLeft() == *topLeft : !panel;
            },
            5000);
    };

    // Xvfb's screen is 1280 × 800: no room below or to the right, so above
    // the pointer, 8 px inside.
    ASSERT_TRUE(XDoTool::moveTo({ 1270, 790 }));
    ASSERT_TRUE(pressShortcut());
    EXPECT_TRUE(waitForPanel(QPoint(912, 302)));
    ASSERT_TRUE(pressShortcut());
    EXPECT_TRUE(waitForPanel(std::nullopt));

    // A click on the bare desktop moves no focus, and hides the panel too.
    ASSERT_TRUE(XDoTool::moveTo({ 100, 100 }));
    ASSERT_TRUE(pressShortcut());
    ASSERT_TRUE(waitForPanel(QPoint(108, 104)));
    ASSERT_TRUE(XDoTool::click({ 1200, 700 }));
    EXPECT_TRUE(waitForPanel(std::nullopt));
}

// A shortcut another program holds leaves Zettly without one, running.
TEST(ZettlyApp, RunsWithoutTheShortcutWhenAnotherProgramHoldsIt)
{
    OtherClient holder;
    // Control and Super, on the key that types v under Xvfb.
    ASSERT_TRUE(holder.grabKey(55, (1 << 2) | (1 << 6)));
    RunningZettly zettly;
    QProcess &app = zettly.start();
    ASSERT_TRUE(zettly.waitUntilRecording());
    ASSERT_TRUE(pressShortcut());
    // The press went to the program holding the keys: a key grabbed by one
    // client reaches no other.
    EXPECT_TRUE(QTest::qWaitFor([&] { return holder.takeEvents().contains(XCB_KEY_PRESS); }, 5000));
    EXPECT_FALSE(panelOf(holder, app));
    EXPECT_EQ(app.state(), QProcess::Running);
}

// zettly --toggle, --show and --hide drive the running copy's panel and end;
// with no copy running they say so in one line.
TEST(ZettlyApp, CommandLineDrivesTheRunningPanel)
{
    RunningZettly zettly;
    const auto run = [&](const QString &option) {
        QProcess command;
        command.setProcessEnvironment(zettly.environment());
        command.start(QStringLiteral(ZETTLY_APP_PATH), { option });
        const bool ended = command.waitForFinished(10000);
        return std::make_pair(ended ? command.exitCode() : -1, command.readAllStandardError().trimmed());
    };
    for (const QString &option : { QStringLiteral("--toggle"), QStringLiteral("--inconnue") }) {
        const auto [exitCode, error] = run(option);
        EXPECT_EQ(exitCode, 1) << qPrintable(option);
        EXPECT_EQ(error.count('\n'), 0) << error.constData();
        EXPECT_TRUE(error.startsWith("zettly : ")) << error.constData();
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
        const auto [exitCode, error] = run(QString::fromLatin1(step.option));
        EXPECT_EQ(exitCode, 0) << step.option << ' ' << error.constData();
        EXPECT_TRUE(QTest::qWaitFor([&] { return panelOf(display, app).has_value() == step.shown; }, 5000))
            << step.option;
    }
    EXPECT_EQ(app.state(), QProcess::Running);
}
