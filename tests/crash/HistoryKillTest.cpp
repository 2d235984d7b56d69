// SPDX-License-Identifier: GPL-3.0-or-later
// Kills a process that saves the history in a loop at random moments and
// checks that the file on disk is always one whole list: the last one
// reported saved, or the one whose save was under way.
#include "HistoryCodec.h"
#include "HistoryFolder.h"
#include "SaveLoopEntries.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <random>
#include <thread>

namespace {

constexpr int runs = 300;

// What one run of history_save_loop printed before it was killed.
struct LoopRun {
    bool killed = false;
    std::optional<qint64> loaded;
    std::optional<qint64> lastSaved;
};

// Starts the save loop, lets it run (past its first save unless killed
// during start-up) for a further delay, then kills it outright.
LoopRun killSaveLoop(
    const QString &historyDir, const QString &settingsPath, bool afterFirstSave, std::chrono::microseconds delay)
{
    QProcess loop;
    loop.start(QStringLiteral(ZETTLY_SAVE_LOOP), { historyDir, settingsPath });
    if (!loop.waitForStarted())
        return {};
    QByteArray output;
    while (afterFirstSave && !output.contains("saved ") && loop.waitForReadyRead(10'000))
        output += loop.readAllStandardOutput();
    std::this_thread::sleep_for(delay);
    ::kill(pid_t(loop.processId()), SIGKILL);
    loop.waitForFinished();
    output += loop.readAllStandardOutput();

    LoopRun run { .killed = loop.exitStatus() == QProcess::CrashExit };
    for (const QByteArray &line : output.split('\n')) {
        if (line.startsWith("saved "))
            run.lastSaved = line.mid(6).toLongLong();
        else if (line.startsWith("loaded "))
            run.loaded = line.mid(7).toLongLong();
    }
    return run;
}

// The file must hold the list after save `known` or after save `known + 1`:
// entries numbered down from the newest, as many as the limit keeps.
::testing::AssertionResult holdsWholeList(const QString &path, qint64 known, qint64 *newest)
{
    QFile file(path);
    if (!file.exists()) {
        *newest = 0;
        if (known == 0)
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "no history file after save " << known;
    }
    if (!file.open(QIODevice::ReadOnly))
        return ::testing::AssertionFailure() << "history file unreadable";
    const QByteArray bytes = file.readAll();
    const auto items = HistoryCodec::decode(bytes);
    if (!items)
        return ::testing::AssertionFailure() << "history file of " << bytes.size() << " bytes does not decode";
    if (items->isEmpty())
        return ::testing::AssertionFailure() << "history file is an empty list";

    const qint64 top = items->first().preview.toLongLong();
    if (top != known && top != known + 1)
        return ::testing::AssertionFailure() << "newest entry " << top << " after save " << known;
    const qint64 expectedSize = std::min(top, SaveLoopEntries::historyLimit);
    if (items->size() != expectedSize)
        return ::testing::AssertionFailure()
            << items->size() << " entries below " << top << ", expected " << expectedSize;
    for (qsizetype i = 0; i < items->size(); ++i) {
        const ClipItem &item = items->at(i);
        const qint64 sequence = top - i;
        if (item.preview != SaveLoopEntries::preview(sequence) || item.fullText != SaveLoopEntries::text(sequence)
            || item.kind != ClipKind::Text || item.pinned)
            return ::testing::AssertionFailure() << "entry " << i << " is not entry " << sequence;
    }
    *newest = top;
    return ::testing::AssertionSuccess();
}

// Names in the history folder besides the file and the images folder.
QStringList strayFiles(const QString &dirPath)
{
    QStringList names = QDir(dirPath).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    names.removeAll(QStringLiteral("clips.json"));
    names.removeAll(QStringLiteral("images"));
    return names;
}

// What a save killed before its rename leaves: its temporary file.
bool isInterruptedSave(const QString &name)
{
    static const QString prefix = QStringLiteral("clips.json.saving-");
    return name.size() == prefix.size() + 6 && name.startsWith(prefix);
}

TEST(HistoryKillTest, FileIsAlwaysTheOldOrTheNewList)
{
    int argc = 0;
    QCoreApplication app(argc, nullptr);
    QTemporaryDir temp;
    ASSERT_TRUE(temp.isValid());
    const QString historyDir = temp.filePath(QStringLiteral("history"));
    const QString settingsPath = temp.filePath(QStringLiteral("settings/defaults.json"));

    const unsigned seed = std::random_device {}();
    SCOPED_TRACE(::testing::Message() << "random seed " << seed);
    std::mt19937 random(seed);
    // A save of this history takes a few milliseconds: kills spread over
    // several saves land before, inside and after the write and the rename.
    std::uniform_int_distribution<int> delayMicroseconds(0, 20'000);
    std::bernoulli_distribution killDuringStartup(0.2);

    qint64 known = 0; // the newest entry known to be on disk
    int killsAfterASave = 0;
    int unreportedSaves = 0; // kills after a save finished but before it was reported
    for (int attempt = 0; attempt < runs; ++attempt) {
        SCOPED_TRACE(::testing::Message() << "run " << attempt << ", newest known entry " << known);
        const bool afterFirstSave = !killDuringStartup(random);
        const LoopRun run = killSaveLoop(
            historyDir, settingsPath, afterFirstSave, std::chrono::microseconds(delayMicroseconds(random)));
        ASSERT_TRUE(run.killed) << "the save loop did not start, or ended by itself";
        if (afterFirstSave) {
            ASSERT_TRUE(run.lastSaved) << "no save reported";
            ++killsAfterASave;
        }
        // A run starts from what the previous one left on disk.
        if (run.loaded)
            EXPECT_EQ(*run.loaded, known);
        if (run.lastSaved)
            known = std::max(known, *run.lastSaved);

        qint64 newest = 0;
        ASSERT_TRUE(holdsWholeList(historyDir + QStringLiteral("/clips.json"), known, &newest));
        if (newest > known)
            ++unreportedSaves;
        known = newest;
        // A copy set aside as unreadable would mean a run met a broken file.
        for (const QString &name : strayFiles(historyDir))
            ASSERT_TRUE(isInterruptedSave(name)) << qPrintable(name);
    }
    // The next start removes what an interrupted save left: such a copy would
    // keep clips the user deleted since.
    const HistoryFolder nextStart(historyDir);
    EXPECT_EQ(strayFiles(historyDir), QStringList());
    std::printf("%d kills, %d after a reported save, %d with the save under way already on disk\n", runs,
        killsAfterASave, unreportedSaves);
}

} // namespace
