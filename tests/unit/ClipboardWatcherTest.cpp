// SPDX-License-Identifier: GPL-3.0-or-later
#include "Paste.h"
#include "PasteboardFixture.h"
#include "PasteboardTypes.h"

#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <functional>

class ClipboardWatcherTest : public PasteboardFixture { };

TEST_F(ClipboardWatcherTest, PollRecordsOnlyChangesAfterConstruction)
{
    pasteboard.copyText(u"already there"_s);
    startWatcher();
    // A poll has looked, and still finds nothing new.
    QSignalSpy polls(watcher->findChild<QTimer *>(), &QTimer::timeout);
    ASSERT_TRUE(polls.wait(2 * int(ClipboardWatcher::pollInterval.count())));
    EXPECT_TRUE(store.items().isEmpty());

    // A change whose notice got lost is still found by the poll.
    pasteboard.blockSignals(true);
    pasteboard.copyText(u"notice lost"_s);
    pasteboard.blockSignals(false);
    settle();
    EXPECT_TRUE(store.items().isEmpty());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !store.items().isEmpty(); }, 2 * ClipboardWatcher::pollInterval.count()));
    EXPECT_EQ(previews(), QStringList { u"notice lost"_s });

    pasteboard.copyText(u"next"_s);
    settle();
    EXPECT_EQ(previews(), (QStringList { u"next"_s, u"notice lost"_s }));
}

TEST_F(ClipboardWatcherTest, EveryCopyIsHandedToTheStoreEvenTheSameText)
{
    startWatcher();
    pasteboard.copyText(u"same"_s);
    settle();
    ASSERT_EQ(store.items().size(), 1);
    // With the first one pinned, the store keeps a second copy: only the
    // watcher could drop it.
    store.togglePin(store.items().first().id);
    pasteboard.copyText(u"same"_s);
    settle();
    EXPECT_EQ(previews(), (QStringList { u"same*"_s, u"same"_s }));
}

TEST_F(ClipboardWatcherTest, OwnWriteIsSkippedOnceAndALaterCopyIsNot)
{
    startWatcher();
    pasteboard.copyText(u"older"_s);
    settle();
    pasteboard.copyText(u"newer"_s);
    settle();
    ASSERT_EQ(previews(), (QStringList { u"newer"_s, u"older"_s }));
    const QList<ClipItem> before = store.items();

    Paste::putOnPasteboard(store.items().last(), store, *watcher);
    settle();
    EXPECT_EQ(store.items(), before) << "the pasted entry moved or came back";
    EXPECT_FALSE(watcher->ownWriteCount());

    // The user copies before the tick has looked at the write back.
    Paste::putOnPasteboard(store.items().last(), store, *watcher);
    pasteboard.copyText(u"typed"_s);
    settle();
    EXPECT_EQ(previews(), (QStringList { u"typed"_s, u"newer"_s, u"older"_s }));
    EXPECT_FALSE(watcher->ownWriteCount());
}

TEST_F(ClipboardWatcherTest, PrivacyRulesApplyOnlyWhileTheSwitchIsOn)
{
    struct Row {
        const char *name;
        Offered extraTypes;
        QString frontmost;
        bool recordedWhenOn;
    };
    const QByteArray secret = "secret";
    const QList<Row> rows {
        { "concealed marker", { { PasteboardTypes::concealed, {} } }, u"org.kde.kate"_s, false },
        { "transient marker", { { PasteboardTypes::transient, {} } }, {}, false },
        { "hint secret", { { PasteboardTypes::passwordManagerHint, secret } }, {}, false },
        { "hint other value", { { PasteboardTypes::passwordManagerHint, "public" } }, {}, true },
        { "bitwarden in front", {}, u"com.bitwarden.desktop"_s, false },
        { "KeePassXC by its window class", {}, u"KeePassXC"_s, false },
        { "identifier differs in case", {}, u"com.Bitwarden.desktop"_s, true },
        { "other app in front", {}, u"org.kde.kate"_s, true },
    };
    startWatcher();
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        for (const bool on : { true, false }) {
            settings.setIgnoreSecretApps(on);
            if (row.frontmost.isEmpty())
                workspace.setFrontmostApp(std::nullopt);
            else
                workspace.setFrontmostIdentifier(row.frontmost);
            const QString text = QString::fromLatin1(row.name) + (on ? u" on"_s : u" off"_s);
            const ClipboardSnapshot snapshot
                = offer(Offered { { PasteboardTypes::string, text.toUtf8() } } + row.extraTypes);
            pasteboard.copy(snapshot);
            // A secret's text is not even read.
            EXPECT_EQ(pasteboard.data(PasteboardTypes::string).has_value(), row.recordedWhenOn || !on);
            settle();
            const bool recorded = !store.items().isEmpty() && store.items().first().preview == text;
            EXPECT_EQ(recorded, row.recordedWhenOn || !on) << (on ? "switch on" : "switch off");
            // Handled, the copy keeps its types but not its bytes.
            EXPECT_EQ(pasteboard.types(), snapshot.types);
            EXPECT_FALSE(pasteboard.data(PasteboardTypes::string));
        }
    }

    // A hint offered but unreadable is taken for a secret.
    settings.setIgnoreSecretApps(true);
    workspace.setFrontmostApp(std::nullopt);
    ClipboardSnapshot unreadable = offer({ { PasteboardTypes::string, "hint unreadable" } });
    unreadable.types.append(PasteboardTypes::passwordManagerHint);
    pasteboard.copy(unreadable);
    settle();
    EXPECT_NE(store.items().first().preview, u"hint unreadable"_s);
}

TEST_F(ClipboardWatcherTest, SourceAndPasswordManagerAreTakenAtTheTick)
{
    startWatcher();
    workspace.setFrontmostIdentifier(u"org.gnome.TextEditor"_s);
    pasteboard.copyText(u"from editor"_s);
    settle();
    ASSERT_EQ(store.items().size(), 1);
    EXPECT_EQ(store.items().first().sourceApp, u"org.gnome.TextEditor"_s);

    workspace.setFrontmostApp(RunningApp { 7, std::nullopt });
    pasteboard.copyText(u"no identifier"_s);
    settle();
    EXPECT_EQ(store.items().first().preview, u"no identifier"_s);
    EXPECT_FALSE(store.items().first().sourceApp);

    // A copy announced while the password manager is in front is not read at
    // all, even when the user leaves it before the tick.
    workspace.setFrontmostIdentifier(u"com.bitwarden.desktop"_s);
    pasteboard.copyText(u"hunter2"_s);
    workspace.setFrontmostIdentifier(u"org.kde.kate"_s);
    EXPECT_EQ(pasteboard.types(), QStringList { PasteboardTypes::string });
    EXPECT_FALSE(pasteboard.data(PasteboardTypes::string));
    settle();
    EXPECT_EQ(store.items().first().preview, u"no identifier"_s);

    // One read, then the tick finds the manager in front.
    pasteboard.copyText(u"hunter3"_s);
    workspace.setFrontmostIdentifier(u"com.bitwarden.desktop"_s);
    settle();
    EXPECT_EQ(store.items().first().preview, u"no identifier"_s);
}

// When the program whose copy was recorded quits, the clipboard would go
// empty: the entry is put back, as our own write.
TEST_F(ClipboardWatcherTest, RecordedCopyOutlivesTheProgramThatQuit)
{
    struct Row {
        const char *name;
        std::function<void()> between;
        bool restored;
    };
    const QList<Row> rows {
        { "recorded copy", [] {}, true },
        { "entry removed", [&] { store.remove(store.items().first().id); }, false },
        { "another program still owns it", [&] { pasteboard.copyText(u"other"_s); }, false },
    };
    startWatcher();
    // What each change put on the clipboard, as it was published.
    QStringList written;
    QObject::connect(&pasteboard, &Pasteboard::changed,
        [&] { written.append(pasteboard.string(PasteboardTypes::string).value_or(QString())); });
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        pasteboard.copyText(QString::fromLatin1(row.name));
        settle();
        row.between();
        written.clear();
        pasteboard.quitOwner();
        settle();
        QStringList expected(1);
        if (row.restored)
            expected << QString() << QString::fromLatin1(row.name);
        EXPECT_EQ(written, expected);
        EXPECT_EQ(watcher->ownWriteCount().has_value(), row.restored);
        settle();
        EXPECT_FALSE(watcher->ownWriteCount());
    }
}
