// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardStore.h"
#include "AppSettings.h"
#include "HistoryCodec.h"
#include "TestFolder.h"

#include <QSignalSpy>

namespace {

ClipItem text(const QString &value, double createdAt = ClipItem::now())
{
    return ClipItem { .kind = ClipKind::Text, .preview = value, .fullText = value, .createdAt = createdAt };
}

ClipItem image(const QString &fileName, const QString &preview = QStringLiteral("Image 10×10"))
{
    return ClipItem { .kind = ClipKind::Image, .preview = preview, .imageRelPath = fileName };
}

QStringList previews(const QList<ClipItem> &items)
{
    QStringList result;
    for (const ClipItem &item : items)
        result.append(item.preview + (item.pinned ? QStringLiteral("*") : QString()));
    return result;
}

} // namespace

class ClipboardStoreTest : public TestFolder {
protected:
    ClipboardStoreTest()
        : settings(path(QStringLiteral("defaults.json")))
    {
    }

    QString dir() const { return path(QStringLiteral("Zettly")); }
    QString db() const { return dir() + QStringLiteral("/clips.json"); }

    // Once its saves are written, the file holds what is in memory.
    void expectSaved(ClipboardStore &store) const
    {
        store.flush();
        const auto onDisk = HistoryCodec::decode(readAll(db()));
        ASSERT_TRUE(onDisk);
        EXPECT_EQ(*onDisk, store.items());
    }

    // Makes a store whose file lists the given entries in that order.
    std::unique_ptr<ClipboardStore> storeHolding(const QList<ClipItem> &items)
    {
        HistoryFolder(dir()).save(items);
        return std::make_unique<ClipboardStore>(settings, dir());
    }

    AppSettings settings;
};

TEST_F(ClipboardStoreTest, AddSkipsOnlyARepeatOfTheNewestUnpinnedEntry)
{
    ClipboardStore store(settings, dir());
    EXPECT_TRUE(store.items().isEmpty());
    store.flush();
    EXPECT_FALSE(QFile::exists(db()));

    store.add(text(QStringLiteral("A")));
    store.add(text(QStringLiteral("A")));
    EXPECT_EQ(previews(store.items()), QStringList { QStringLiteral("A") });
    store.add(text(QStringLiteral("B")));
    store.add(text(QStringLiteral("A")));
    EXPECT_EQ(previews(store.items()), (QStringList { QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("A") }));
    expectSaved(store);

    // Another source application or instant is still a repeat; canonically
    // equivalent text too. Nothing is written for a repeat.
    backdate(db());
    const QDateTime before = modified(db());
    ClipItem again = text(QStringLiteral("A"), 5);
    again.sourceApp = QStringLiteral("org.kde.kate");
    store.add(again);
    EXPECT_EQ(store.items().size(), 3);
    store.flush();
    EXPECT_EQ(modified(db()), before);

    store.add(text(QStringLiteral("caf\u00e9")));
    store.add(text(QStringLiteral("cafe\u0301")));
    EXPECT_EQ(store.items().size(), 4);

    // Same preview but another full text is new; so is another kind.
    ClipItem longer = text(QStringLiteral("caf\u00e9"));
    longer.fullText = QStringLiteral("caf\u00e9 au lait");
    store.add(longer);
    ClipItem asLink = longer;
    asLink.kind = ClipKind::Url;
    store.add(asLink);
    EXPECT_EQ(store.items().size(), 6);

    // An equal pinned entry does not hide a new capture.
    store.togglePin(store.items().first().id);
    store.add(asLink);
    EXPECT_EQ(store.items().size(), 7);

    // Images of the same size and files with the same name repeat whatever
    // their files.
    store.add(image(QStringLiteral("one.png")));
    store.add(image(QStringLiteral("two.png")));
    EXPECT_EQ(store.items().size(), 8);
    expectSaved(store);
}

TEST_F(ClipboardStoreTest, AddGoesBelowPinnedEntriesAndDropsTheOldestUnpinned)
{
    auto store = storeHolding({
        ClipItem { .preview = QStringLiteral("P"), .pinned = true, .createdAt = 1 },
        text(QStringLiteral("U1"), 3),
        image(QStringLiteral("U2.png"), QStringLiteral("U2")),
    });
    writeAll(store->imagesDirPath() + QStringLiteral("/U2.png"), "png");
    settings.setHistoryLimit(2);
    // Below the pinned entries, with an id of its own.
    const ClipItem incoming = text(QStringLiteral("N"), 4);
    store->add(incoming);
    EXPECT_EQ(
        previews(store->items()), (QStringList { QStringLiteral("P*"), QStringLiteral("N"), QStringLiteral("U1") }));
    EXPECT_NE(store->items().at(1).id, incoming.id);
    EXPECT_EQ(store->items().at(1).createdAt, incoming.createdAt);
    // Dropping an entry leaves its image on disk.
    EXPECT_TRUE(QFile::exists(store->imagesDirPath() + QStringLiteral("/U2.png")));
    expectSaved(*store);

    // Below 1 counts as 1; the limit is read at every trim.
    for (qint64 limit : { 0, -5 }) {
        settings.setHistoryLimit(limit);
        store->add(text(QStringLiteral("M") + QString::number(limit)));
        EXPECT_EQ(previews(store->items()),
            (QStringList { QStringLiteral("P*"), QStringLiteral("M") + QString::number(limit) }));
    }

    // A loaded file longer than the limit stays whole until the next add.
    settings.setHistoryLimit(3);
    store.reset(); // its last save would land over the file written next
    QList<ClipItem> many;
    for (int i = 0; i < 10; ++i)
        many.append(text(QString::number(i), 100 - i));
    auto loaded = storeHolding(many);
    EXPECT_EQ(loaded->items().size(), 10);
    loaded->add(text(QStringLiteral("new")));
    EXPECT_EQ(
        previews(loaded->items()), (QStringList { QStringLiteral("new"), QStringLiteral("0"), QStringLiteral("1") }));
}

TEST_F(ClipboardStoreTest, TogglePinSortsStablyByPinThenDate)
{
    auto store
        = storeHolding({ text(QStringLiteral("c"), 30), text(QStringLiteral("b"), 20), text(QStringLiteral("a"), 10) });
    store->togglePin(store->items().at(2).id);
    EXPECT_EQ(
        previews(store->items()), (QStringList { QStringLiteral("a*"), QStringLiteral("c"), QStringLiteral("b") }));
    expectSaved(*store);

    // Unpinning puts the entry back by date, not on top.
    store->togglePin(store->items().at(0).id);
    EXPECT_EQ(
        previews(store->items()), (QStringList { QStringLiteral("c"), QStringLiteral("b"), QStringLiteral("a") }));

    // Equal dates keep their previous relative order; the sort also regroups
    // a file stored out of order.
    store.reset(); // its last save would land over the file written next
    auto ties = storeHolding({ text(QStringLiteral("x"), 5), text(QStringLiteral("old"), 1),
        text(QStringLiteral("y"), 5), text(QStringLiteral("z"), 5) });
    ties->togglePin(ties->items().at(3).id);
    EXPECT_EQ(previews(ties->items()),
        (QStringList { QStringLiteral("z*"), QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("old") }));

    // Unpinning does not trim: the group may hold one more than the limit.
    settings.setHistoryLimit(3);
    ties->togglePin(ties->items().at(0).id);
    EXPECT_EQ(ties->items().size(), 4);

    // An unknown id changes nothing and writes nothing.
    ties->flush();
    QFile::remove(db());
    QSignalSpy changes(ties.get(), &ClipboardStore::aboutToChange);
    ties->togglePin(QUuid::createUuid());
    EXPECT_EQ(changes.count(), 0);
    ties->flush();
    EXPECT_FALSE(QFile::exists(db()));
}

TEST_F(ClipboardStoreTest, RemoveAndClearDeleteOnlyTheirOwnImages)
{
    auto store = storeHolding({
        ClipItem { .kind = ClipKind::Image,
            .preview = QStringLiteral("pinned"),
            .imageRelPath = QStringLiteral("p.png"),
            .pinned = true },
        image(QStringLiteral("a.png"), QStringLiteral("a")),
        ClipItem { .kind = ClipKind::File,
            .preview = QStringLiteral("f.txt"),
            .filePaths = QStringList { path(QStringLiteral("f.txt")) } },
        image(QStringLiteral("b.png"), QStringLiteral("b")),
        text(QStringLiteral("t")),
    });
    for (const char *name : { "p.png", "a.png", "b.png" })
        writeAll(store->imagesDirPath() + u'/' + QString::fromUtf8(name), "png");
    writeAll(path(QStringLiteral("f.txt")), "user file");

    store->remove(store->items().at(1).id);
    EXPECT_FALSE(QFile::exists(store->imagesDirPath() + QStringLiteral("/a.png")));
    EXPECT_EQ(previews(store->items()),
        (QStringList { QStringLiteral("pinned*"), QStringLiteral("f.txt"), QStringLiteral("b"), QStringLiteral("t") }));
    expectSaved(*store);

    // An unknown id changes nothing but still writes the file; a missing image
    // file does not stop the removal.
    store->flush();
    QFile::remove(db());
    store->remove(QUuid::createUuid());
    EXPECT_EQ(store->items().size(), 4);
    expectSaved(*store);
    QFile::remove(store->imagesDirPath() + QStringLiteral("/b.png"));
    store->remove(store->items().at(2).id);
    EXPECT_EQ(store->items().size(), 3);

    store->clearUnpinned();
    EXPECT_EQ(previews(store->items()), QStringList { QStringLiteral("pinned*") });
    EXPECT_TRUE(QFile::exists(store->imagesDirPath() + QStringLiteral("/p.png")));
    EXPECT_TRUE(QFile::exists(path(QStringLiteral("f.txt")))) << "file entries point at the user's own files";
    expectSaved(*store);

    // Clearing a history of pinned entries only still writes the file.
    store->flush();
    QFile::remove(db());
    store->clearUnpinned();
    EXPECT_EQ(store->items().size(), 1);
    expectSaved(*store);
}

TEST_F(ClipboardStoreTest, NoticesComeBeforeEachChange)
{
    ClipboardStore store(settings, dir());
    QList<qsizetype> sizesSeenBefore;
    QObject::connect(&store, &ClipboardStore::aboutToChange, [&] { sizesSeenBefore.append(store.items().size()); });
    QSignalSpy after(&store, &ClipboardStore::changed);

    store.add(text(QStringLiteral("one")));
    // The insertion, then the trim (which assigns even when it drops nothing).
    EXPECT_EQ(sizesSeenBefore, (QList<qsizetype> { 0, 1 }));
    EXPECT_EQ(after.count(), 2);
    store.add(text(QStringLiteral("one")));
    EXPECT_EQ(after.count(), 2) << "a repeat changes nothing";
    store.remove(QUuid::createUuid());
    EXPECT_EQ(after.count(), 3);
}

TEST_F(ClipboardStoreTest, SavesLandInOrderAndTheLastOneBeforeTheStoreEnds)
{
    QList<ClipItem> last;
    {
        ClipboardStore store(settings, dir());
        // Saves queue up faster than they are written; the file must end
        // with the newest list, not an older one written after it.
        for (int i = 0; i < 200; ++i)
            store.add(text(QString::number(i) + QString(2000, u'.')));
        store.togglePin(store.items().at(150).id);
        last = store.items();
    }
    EXPECT_EQ(HistoryCodec::decode(readAll(db())), last);
}

TEST_F(ClipboardStoreTest, HistoryAtItsByteBoundStaysWithinItAndLoadsWhole)
{
    settings.setHistoryLimit(100);
    constexpr qint64 budget = ClipboardStore::historyByteBudget;
    // Entries share one text in memory; the file holds each copy of it.
    const QString shared(budget / 4, u'x');
    const auto entry = [](const QString &name, const QString &body) {
        return ClipItem { .kind = ClipKind::Text, .preview = name, .fullText = body };
    };
    QList<ClipItem> atBound;
    {
        ClipboardStore store(settings, dir());
        qint64 used = 0;
        for (const char *name : { "1", "2", "3" }) {
            store.add(entry(QString::fromLatin1(name), shared));
            used += ClipboardStore::storedSize(store.items().first());
        }
        // This one fills the budget to the byte.
        const qint64 restSize = budget - used - ClipboardStore::entryOverhead - 1;
        store.add(entry(QStringLiteral("4"), QString(restSize, u'y')));
        EXPECT_EQ(previews(store.items()),
            (QStringList { QStringLiteral("4"), QStringLiteral("3"), QStringLiteral("2"), QStringLiteral("1") }));

        // One byte more and the oldest goes.
        store.add(entry(QStringLiteral("5"), QString()));
        EXPECT_EQ(previews(store.items()),
            (QStringList { QStringLiteral("5"), QStringLiteral("4"), QStringLiteral("3"), QStringLiteral("2") }));
        // Pinned entries stay whatever their size; a copy that cannot fit
        // beside them is not kept, and the others stay.
        for (int i = 0; i < 3; ++i)
            store.togglePin(store.items().at(3).id);
        store.add(entry(QStringLiteral("66"), shared));
        EXPECT_EQ(previews(store.items()),
            (QStringList { QStringLiteral("4*"), QStringLiteral("3*"), QStringLiteral("2*"), QStringLiteral("5") }));
        // One that fits exactly pushes out the rest.
        store.add(entry(QStringLiteral("6"), shared));
        EXPECT_EQ(previews(store.items()),
            (QStringList { QStringLiteral("4*"), QStringLiteral("3*"), QStringLiteral("2*"), QStringLiteral("6") }));
        atBound = store.items();
    }
    EXPECT_GE(QFileInfo(db()).size(), budget);
    EXPECT_EQ(ClipboardStore(settings, dir()).items(), atBound);
}
