// SPDX-License-Identifier: GPL-3.0-or-later
// The real zettly ended by SIGTERM (a logout, kill) while it saves: the save
// under way is finished, and the copy that caused it is on disk.
#include "HistoryFolder.h"
#include "RunningZettly.h"
#include "TestPrograms.h"

#include <QDir>

#include <gtest/gtest.h>

namespace {

// A history whose saves take long enough to be caught in the middle.
void prefill(const QString &historyDir)
{
    const QString text(400'000, u'x');
    QList<ClipItem> items;
    for (int i = 0; i < 150; ++i)
        items.append(ClipItem { .kind = ClipKind::Text, .preview = QString::number(i), .fullText = text });
    ASSERT_TRUE(HistoryFolder(historyDir).save(items));
}

bool saveUnderWay(const QString &historyDir)
{
    return !QDir(historyDir).entryList({ QStringLiteral("clips.json.saving-*") }, QDir::Files | QDir::Hidden).isEmpty();
}

} // namespace

TEST(Termination, SigtermFinishesTheSaveOfTheLastCopy)
{
    RunningZettly zettly;
    const QString historyDir = zettly.environment().value(QStringLiteral("XDG_DATA_HOME")) + QStringLiteral("/Zettly");
    prefill(historyDir);
    QProcess &app = zettly.start();
    ASSERT_TRUE(zettly.waitUntilRecording());
    // Quiet: what the clipboard holds is saved and no save is running.
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return !saveUnderWay(historyDir) && zettly.savedTexts().value(0) == QString::fromUtf8(XClip::paste()); },
        20000));

    XClip::copy("à garder");
    // The only change since is this copy: a save under way is its save.
    ASSERT_TRUE(eventually([&] { return saveUnderWay(historyDir); }));
    app.terminate();
    ASSERT_TRUE(app.waitForFinished(20000));
    EXPECT_EQ(app.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(app.exitCode(), 0);
    EXPECT_EQ(zettly.savedTexts().value(0), QStringLiteral("à garder"));
    EXPECT_FALSE(saveUnderWay(historyDir));
}
