// SPDX-License-Identifier: GPL-3.0-or-later
// Kills a process that saves the history in a loop at random moments and
// checks that the file on disk is always one whole list: the last one
// reported saved, or the one whose save was under way.
#include "HistoryCodec.h"
#include "HistoryFolder.h"
#include "SaveLoopEntries.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <random>
#include <string>
#include <thread>

extern char **environ;

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int runs = 300;

// One started history_save_loop and the lines it has printed so far.
class SaveLoop {
public:
    SaveLoop(const QString &historyDir, const QString &settingsPath)
    {
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0)
            return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
        const QByteArray dir = QFile::encodeName(historyDir);
        const QByteArray settings = QFile::encodeName(settingsPath);
        char *const argv[] = { const_cast<char *>(ZETTLY_SAVE_LOOP), const_cast<char *>(dir.constData()),
            const_cast<char *>(settings.constData()), nullptr };
        if (posix_spawn(&m_pid, ZETTLY_SAVE_LOOP, &actions, nullptr, argv, environ) != 0)
            m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
        close(fds[1]);
        m_out = fds[0];
    }

    ~SaveLoop()
    {
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
        if (m_out >= 0)
            close(m_out);
    }

    bool started() const { return m_pid > 0 && m_out >= 0; }

    // Reads output until a save is reported or the deadline passes.
    bool waitForFirstSave(Clock::time_point deadline)
    {
        while (!m_lastSaved && Clock::now() < deadline) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            pollfd fd { m_out, POLLIN, 0 };
            if (poll(&fd, 1, int(left.count()) + 1) > 0 && !readSome())
                return false;
        }
        return m_lastSaved.has_value();
    }

    // SIGKILL, then everything it wrote before dying. False when it had
    // already ended by itself.
    bool killAndDrain()
    {
        kill(m_pid, SIGKILL);
        int status = 0;
        waitpid(m_pid, &status, 0);
        m_pid = -1;
        while (readSome()) { }
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }

    std::optional<qint64> loaded() const { return m_loaded; }
    std::optional<qint64> lastSaved() const { return m_lastSaved; }

private:
    // False at end of output.
    bool readSome()
    {
        char buffer[4096];
        const ssize_t n = read(m_out, buffer, sizeof buffer);
        if (n <= 0)
            return false;
        m_pending.append(buffer, size_t(n));
        for (size_t end; (end = m_pending.find('\n')) != std::string::npos;) {
            const std::string line = m_pending.substr(0, end);
            m_pending.erase(0, end + 1);
            long long number = 0;
            if (std::sscanf(line.c_str(), "saved %lld", &number) == 1)
                m_lastSaved = number;
            else if (std::sscanf(line.c_str(), "loaded %lld", &number) == 1)
                m_loaded = number;
        }
        return true;
    }

    pid_t m_pid = -1;
    int m_out = -1;
    std::string m_pending;
    std::optional<qint64> m_loaded;
    std::optional<qint64> m_lastSaved;
};

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

// What a save killed between naming its finished temporary file and renaming
// it leaves: "clips.json." and six random characters.
bool isInterruptedSave(const QString &name)
{
    static const QString prefix = QStringLiteral("clips.json.");
    return name.size() == prefix.size() + 6 && name.startsWith(prefix);
}

TEST(HistoryKillTest, FileIsAlwaysTheOldOrTheNewList)
{
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
    for (int run = 0; run < runs; ++run) {
        SCOPED_TRACE(::testing::Message() << "run " << run << ", newest known entry " << known);
        SaveLoop loop(historyDir, settingsPath);
        ASSERT_TRUE(loop.started());
        if (!killDuringStartup(random)) {
            ASSERT_TRUE(loop.waitForFirstSave(Clock::now() + 10s)) << "no save reported";
            ++killsAfterASave;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(delayMicroseconds(random)));
        ASSERT_TRUE(loop.killAndDrain()) << "the save loop ended by itself";

        // A run starts from what the previous one left on disk.
        if (loop.loaded())
            EXPECT_EQ(*loop.loaded(), known);
        if (loop.lastSaved())
            known = std::max(known, *loop.lastSaved());

        qint64 newest = 0;
        ASSERT_TRUE(holdsWholeList(historyDir + QStringLiteral("/clips.json"), known, &newest));
        if (newest > known)
            ++unreportedSaves;
        known = newest;
        // A copy set aside as unreadable would mean a run met a broken file.
        // A temporary file is only acceptable as a whole list: a partial one
        // means the data was written under a visible name.
        for (const QString &name : strayFiles(historyDir)) {
            ASSERT_TRUE(isInterruptedSave(name)) << qPrintable(name);
            QFile stray(historyDir + u'/' + name);
            ASSERT_TRUE(stray.open(QIODevice::ReadOnly));
            ASSERT_TRUE(HistoryCodec::decode(stray.readAll())) << "partial temporary file " << qPrintable(name);
        }
    }
    // The next start removes what an interrupted save left: such a copy would
    // keep clips the user deleted since.
    const HistoryFolder nextStart(historyDir);
    EXPECT_EQ(strayFiles(historyDir), QStringList());
    std::printf("%d kills, %d after a reported save, %d with the save under way already on disk\n", runs,
        killsAfterASave, unreportedSaves);
}

} // namespace
