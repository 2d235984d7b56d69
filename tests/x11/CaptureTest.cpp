// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "ClipboardWatcher.h"
#include "OtherClient.h"
#include "PasteboardTypes.h"
#include "RunningZettly.h"
#include "TestPrograms.h"
#include "X11Pasteboard.h"
#include "X11Workspace.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// A text no other test uses, so that finding it means this test put it there.
QByteArray uniqueText(const char *prefix)
{
    QByteArray text = prefix;
    for (int i = 0; i < 4; ++i)
        text += '-' + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
    return text;
}

// Which of the needles the process's readable memory holds, in any mapping.
QList<QByteArray> foundInMemory(qint64 pid, const QList<QByteArray> &needles)
{
    QFile maps(QStringLiteral("/proc/%1/maps").arg(pid));
    QFile memory(QStringLiteral("/proc/%1/mem").arg(pid));
    if (!maps.open(QIODevice::ReadOnly) || !memory.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return needles;
    constexpr qint64 chunk = 8 * 1024 * 1024;
    QList<QByteArray> found;
    for (const QByteArray &line : maps.readAll().split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() < 2 || !fields[1].startsWith('r') || line.contains("[vvar]") || line.contains("[vsyscall]"))
            continue;
        const QList<QByteArray> range = fields[0].split('-');
        const qint64 start = range.value(0).toLongLong(nullptr, 16);
        const qint64 end = range.value(1).toLongLong(nullptr, 16);
        // Chunks overlap by a needle's length, so none is cut in two.
        for (qint64 at = start; at < end; at += chunk - 256) {
            if (!memory.seek(at))
                break;
            const QByteArray bytes = memory.read(std::min(chunk, end - at));
            for (const QByteArray &needle : needles) {
                if (!found.contains(needle) && bytes.contains(needle))
                    found.append(needle);
            }
        }
    }
    return found;
}

QByteArray utf16(const QByteArray &ascii)
{
    const QString text = QString::fromLatin1(ascii);
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

} // namespace

// The app's capture path on a real X server: another client copies, our
// clipboard reader fetches the data off the main thread, the watcher records
// it in the history file.
class Capture : public ::testing::Test {
protected:
    Capture()
        : settings(dir.filePath(QStringLiteral("defaults.json")))
        , store(settings, dir.filePath(QStringLiteral("Zettly")))
        , watcher(pasteboard, workspace, store, settings)
    {
        watcher.start();
    }

    bool waitForCount(qsizetype count) const
    {
        return eventually([&] { return store.items().size() == count; });
    }

    ClipItem newest() const { return store.items().value(0); }

    QTemporaryDir dir;
    AppSettings settings;
    ClipboardStore store;
    X11Pasteboard pasteboard;
    X11Workspace workspace;
    ClipboardWatcher watcher;
};

// Huge copies: one beyond the bound is given up, a long one read in pieces.
TEST_F(Capture, HostileCopiesHaveBoundedOutcomes)
{
    // Beyond the bound: given up, the type offered without its bytes.
    const qint64 before = pasteboard.changeCount();
    XClip::copy(QByteArray(65 * 1024 * 1024, 'x'));
    ASSERT_TRUE(eventually([&] { return pasteboard.changeCount() > before; }));
    QCoreApplication::processEvents();
    EXPECT_TRUE(pasteboard.types().contains(PasteboardTypes::string));
    EXPECT_TRUE(store.items().isEmpty());

    // 5 MB comes in INCR pieces and is recorded whole.
    QByteArray large(5 * 1024 * 1024, 'y');
    large.prepend("début ");
    XClip::copy(large);
    ASSERT_TRUE(waitForCount(1));
    EXPECT_EQ(newest().fullText->toUtf8(), large);
    EXPECT_EQ(newest().preview.size(), 200);
}

// The clipboard's owner goes away: a recorded copy comes back, as our own;
// a clipboard cleared on purpose, or a secret's, stays empty.
TEST_F(Capture, ARecordedCopyOutlivesTheProgramThatQuit)
{
    settings.setIgnoreSecretApps(true);
    struct Row {
        const char *name;
        QList<TestSelectionOwner::Target> targets;
        bool giveUp;
        bool restored;
    };
    const Row rows[] = {
        { "its owner quits", { { "UTF8_STRING", "survit à son programme" } }, false, true },
        { "cleared by its owner", { { "UTF8_STRING", "effacé exprès" } }, true, false },
        { "a secret's owner quits", { { "UTF8_STRING", "secret" }, { "org.nspasteboard.ConcealedType", "" } }, false,
            false },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const qint64 start = pasteboard.changeCount();
        auto owner = std::make_unique<TestSelectionOwner>(row.targets);
        ASSERT_TRUE(owner->waitUntilOwner());
        // This owner's copy seen, not the restored one before it, which offers
        // as many types.
        ASSERT_TRUE(eventually(
            [&] { return pasteboard.changeCount() > start && pasteboard.types().size() == row.targets.size(); }));
        QCoreApplication::processEvents();
        const QString text = QString::fromUtf8(row.targets[0].bytes);
        // Recorded before it goes, or there is nothing to put back.
        ASSERT_TRUE(!row.restored || eventually([&] { return newest().fullText == text; }));
        const qint64 before = pasteboard.changeCount();
        if (row.giveUp)
            owner->giveUp();
        else
            owner.reset();
        ASSERT_TRUE(eventually([&] { return pasteboard.changeCount() > before; }));
        // The watcher's turn, where a restore would take the clipboard.
        QCoreApplication::processEvents();
        if (row.restored) {
            EXPECT_TRUE(eventually([&] { return XClip::paste() == text.toUtf8(); }));
        } else {
            EXPECT_EQ(OtherClient().clipboardOwner(), xcb_window_t(XCB_NONE));
        }
    }
}

// The running app with the privacy switch on: a marked secret never enters
// its memory, where an ordinary copy does.
TEST(CaptureByTheApp, SecretsNeverReachItsMemory)
{
    RunningZettly zettly;
    const qint64 pid = zettly.start().processId();
    ASSERT_TRUE(zettly.waitUntilRecording());
    const QByteArray ordinary = uniqueText("ordinaire");
    {
        TestSelectionOwner owner({ { "UTF8_STRING", ordinary } });
        ASSERT_TRUE(owner.waitUntilOwner());
        ASSERT_TRUE(zettly.waitForNewest(QString::fromLatin1(ordinary)));
    }
    // Its owner gone, the app puts it back.
    ASSERT_TRUE(eventually([&] { return XClip::paste() == ordinary; }));
    QList<QByteArray> secrets;
    for (const auto &mark : { std::pair<QByteArray, QByteArray>("x-kde-passwordManagerHint", "secret"),
             std::pair<QByteArray, QByteArray>("org.nspasteboard.ConcealedType", "") }) {
        const QByteArray marker = mark.first;
        const QByteArray value = mark.second;
        SCOPED_TRACE(marker.constData());
        secrets.append(uniqueText("secret"));
        TestSelectionOwner owner({ { "UTF8_STRING", secrets.last() }, { marker, value } });
        ASSERT_TRUE(owner.waitUntilOwner());
        // The app has looked at the markers; the reader's own test shows
        // that nothing is asked for after them.
        ASSERT_TRUE(eventually([&] {
            const QList<QByteArray> asked = owner.requestedTargets();
            return asked.contains("TARGETS") && (value.isEmpty() || asked.contains(marker));
        }));
        // A later copy recorded: the secret has been dealt with.
        const QByteArray next = uniqueText("suivant");
        TestSelectionOwner nextOwner({ { "UTF8_STRING", next } });
        ASSERT_TRUE(nextOwner.waitUntilOwner());
        ASSERT_TRUE(zettly.waitForNewest(QString::fromLatin1(next)));
        EXPECT_FALSE(owner.requestedTargets().contains("UTF8_STRING"));
    }

    const QList<QByteArray> found = foundInMemory(
        pid, { ordinary, utf16(ordinary), secrets[0], utf16(secrets[0]), secrets[1], utf16(secrets[1]) });
    // The search sees what the app keeps.
    EXPECT_TRUE(found.contains(ordinary) || found.contains(utf16(ordinary)));
    for (const QByteArray &secret : std::as_const(secrets)) {
        EXPECT_FALSE(found.contains(secret)) << secret.constData();
        EXPECT_FALSE(found.contains(utf16(secret))) << secret.constData();
    }
}
