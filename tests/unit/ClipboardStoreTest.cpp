// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardStore.h"
#include "AppSettings.h"
#include "HistoryCodec.h"
#include "TestFolder.h"

#include <QSignalSpy>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

ClipItem image(const QString &fileName, const QString &preview = u"Image 10×10"_s)
{
    return ClipItem { .kind = ClipKind::Image, .preview = preview, .imageRelPath = fileName };
}

} // namespace

class ClipboardStoreTest : public TestFolder {
protected:
    ClipboardStoreTest()
        : settings(path(u"defaults.json"_s))
    {
    }

    QString dir() const { return path(u"Zettly"_s); }
    QString db() const { return dir() + u"/clips.json"_s; }

    // Once its saves are written, the file holds what is in memory.
    void expectSaved(ClipboardStore &store) const
    {
        store.flush();
        const auto onDisk = HistoryCodec::decode(readAll(db()));
        ASSERT_TRUE(onDisk);
        EXPECT_EQ(*onDisk, store.items());
    }

    // Whether the change made the store write its file.
    bool writes(ClipboardStore &store, const std::function<void()> &change) const
    {
        store.flush();
        QFile::remove(db());
        change();
        store.flush();
        return QFile::exists(db());
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

    store.add(textClip(u"A"_s));
    store.add(textClip(u"A"_s));
    EXPECT_EQ(previews(store.items()), QStringList { u"A"_s });
    store.add(textClip(u"B"_s));
    store.add(textClip(u"A"_s));
    EXPECT_EQ(previews(store.items()), (QStringList { u"A"_s, u"B"_s, u"A"_s }));
    expectSaved(store);

    // Another source application or instant is still a repeat; canonically
    // equivalent text too. Nothing is written for a repeat.
    ClipItem again = textClip(u"A"_s, 5);
    again.sourceApp = u"org.kde.kate"_s;
    EXPECT_FALSE(writes(store, [&] { store.add(again); }));
    EXPECT_EQ(store.items().size(), 3);

    store.add(textClip(u"caf\u00e9"_s));
    store.add(textClip(u"cafe\u0301"_s));
    EXPECT_EQ(store.items().size(), 4);

    // Same preview but another full text is new; so is another kind.
    ClipItem longer = textClip(u"caf\u00e9"_s);
    longer.fullText = u"caf\u00e9 au lait"_s;
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
    store.add(image(u"one.png"_s));
    store.add(image(u"two.png"_s));
    EXPECT_EQ(store.items().size(), 8);
    expectSaved(store);
}

TEST_F(ClipboardStoreTest, AddGoesBelowPinnedEntriesAndDropsTheOldestUnpinned)
{
    auto store = storeHolding({
        ClipItem { .preview = u"P"_s, .pinned = true, .createdAt = 1 },
        textClip(u"U1"_s, 3),
        image(u"U2.png"_s, u"U2"_s),
    });
    writeAll(store->imagesDirPath() + u"/U2.png"_s, "png");
    settings.setHistoryLimit(2);
    // Below the pinned entries, with an id of its own.
    const ClipItem incoming = textClip(u"N"_s, 4);
    store->add(incoming);
    EXPECT_EQ(previews(store->items()), (QStringList { u"P*"_s, u"N"_s, u"U1"_s }));
    EXPECT_NE(store->items().at(1).id, incoming.id);
    EXPECT_EQ(store->items().at(1).createdAt, incoming.createdAt);
    // Dropping an entry leaves its image on disk.
    EXPECT_TRUE(QFile::exists(store->imagesDirPath() + u"/U2.png"_s));
    expectSaved(*store);

    // Below 1 counts as 1; the limit is read at every trim.
    for (qint64 limit : { 0, -5 }) {
        settings.setHistoryLimit(limit);
        store->add(textClip(u"M"_s + QString::number(limit)));
        EXPECT_EQ(previews(store->items()), (QStringList { u"P*"_s, u"M"_s + QString::number(limit) }));
    }

    // A loaded file longer than the limit stays whole until the next add.
    settings.setHistoryLimit(3);
    store.reset(); // its last save would land over the file written next
    QList<ClipItem> many;
    for (int i = 0; i < 10; ++i)
        many.append(textClip(QString::number(i), 100 - i));
    auto loaded = storeHolding(many);
    EXPECT_EQ(loaded->items().size(), 10);
    loaded->add(textClip(u"new"_s));
    EXPECT_EQ(previews(loaded->items()), (QStringList { u"new"_s, u"0"_s, u"1"_s }));
}

TEST_F(ClipboardStoreTest, TogglePinSortsStablyByPinThenDate)
{
    auto store = storeHolding({ textClip(u"c"_s, 30), textClip(u"b"_s, 20), textClip(u"a"_s, 10) });
    store->togglePin(store->items().at(2).id);
    EXPECT_EQ(previews(store->items()), (QStringList { u"a*"_s, u"c"_s, u"b"_s }));
    expectSaved(*store);

    // Unpinning puts the entry back by date, not on top.
    store->togglePin(store->items().at(0).id);
    EXPECT_EQ(previews(store->items()), (QStringList { u"c"_s, u"b"_s, u"a"_s }));

    // Equal dates keep their previous relative order; the sort also regroups
    // a file stored out of order.
    store.reset(); // its last save would land over the file written next
    auto ties = storeHolding({ textClip(u"x"_s, 5), textClip(u"old"_s, 1), textClip(u"y"_s, 5), textClip(u"z"_s, 5) });
    ties->togglePin(ties->items().at(3).id);
    EXPECT_EQ(previews(ties->items()), (QStringList { u"z*"_s, u"x"_s, u"y"_s, u"old"_s }));

    // Unpinning does not trim: the group may hold one more than the limit.
    settings.setHistoryLimit(3);
    ties->togglePin(ties->items().at(0).id);
    EXPECT_EQ(ties->items().size(), 4);

    // An unknown id changes nothing and writes nothing.
    QSignalSpy changes(ties.get(), &ClipboardStore::aboutToChange);
    EXPECT_FALSE(writes(*ties, [&] { ties->togglePin(QUuid::createUuid()); }));
    EXPECT_EQ(changes.count(), 0);
}

TEST_F(ClipboardStoreTest, RemoveAndClearDeleteOnlyTheirOwnImages)
{
    auto store = storeHolding({
        ClipItem { .kind = ClipKind::Image, .preview = u"pinned"_s, .imageRelPath = u"p.png"_s, .pinned = true },
        image(u"a.png"_s, u"a"_s),
        ClipItem { .kind = ClipKind::File, .preview = u"f.txt"_s, .filePaths = QStringList { path(u"f.txt"_s) } },
        image(u"b.png"_s, u"b"_s),
        textClip(u"t"_s),
    });
    for (const char *name : { "p.png", "a.png", "b.png" })
        writeAll(store->imagesDirPath() + u'/' + QString::fromUtf8(name), "png");
    writeAll(path(u"f.txt"_s), "user file");

    store->remove(store->items().at(1).id);
    EXPECT_FALSE(QFile::exists(store->imagesDirPath() + u"/a.png"_s));
    EXPECT_EQ(previews(store->items()), (QStringList { u"pinned*"_s, u"f.txt"_s, u"b"_s, u"t"_s }));
    expectSaved(*store);

    // An unknown id changes nothing but still writes the file; a missing image
    // file does not stop the removal.
    EXPECT_TRUE(writes(*store, [&] { store->remove(QUuid::createUuid()); }));
    EXPECT_EQ(store->items().size(), 4);
    expectSaved(*store);
    QFile::remove(store->imagesDirPath() + u"/b.png"_s);
    store->remove(store->items().at(2).id);
    EXPECT_EQ(store->items().size(), 3);

    store->clearUnpinned();
    EXPECT_EQ(previews(store->items()), QStringList { u"pinned*"_s });
    EXPECT_TRUE(QFile::exists(store->imagesDirPath() + u"/p.png"_s));
    EXPECT_TRUE(QFile::exists(path(u"f.txt"_s))) << "file entries point at the user's own files";
    expectSaved(*store);

    // Clearing a history of pinned entries only still writes the file.
    EXPECT_TRUE(writes(*store, [&] { store->clearUnpinned(); }));
    EXPECT_EQ(store->items().size(), 1);
    expectSaved(*store);
}

TEST_F(ClipboardStoreTest, NoticesComeBeforeEachChange)
{
    ClipboardStore store(settings, dir());
    QList<qsizetype> sizesSeenBefore;
    QObject::connect(&store, &ClipboardStore::aboutToChange, [&] { sizesSeenBefore.append(store.items().size()); });
    QSignalSpy after(&store, &ClipboardStore::changed);

    // The insertion and the trim are one change.
    store.add(textClip(u"one"_s));
    EXPECT_EQ(sizesSeenBefore, (QList<qsizetype> { 0 }));
    EXPECT_EQ(after.count(), 1);
    store.add(textClip(u"one"_s));
    EXPECT_EQ(after.count(), 1) << "a repeat changes nothing";
    store.remove(QUuid::createUuid());
    EXPECT_EQ(after.count(), 2);
}

TEST_F(ClipboardStoreTest, SavesLandInOrderAndTheLastOneBeforeTheStoreEnds)
{
    QList<ClipItem> last;
    {
        ClipboardStore store(settings, dir());
        // Saves queue up faster than they are written; the file must end
        // with the newest list, not an older one written after it.
        for (int i = 0; i < 200; ++i)
            store.add(textClip(QString::number(i) + QString(2000, u'.')));
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
        store.add(entry(u"4"_s, QString(restSize, u'y')));
        EXPECT_EQ(previews(store.items()), (QStringList { u"4"_s, u"3"_s, u"2"_s, u"1"_s }));

        // One byte more and the oldest goes.
        store.add(entry(u"5"_s, QString()));
        EXPECT_EQ(previews(store.items()), (QStringList { u"5"_s, u"4"_s, u"3"_s, u"2"_s }));
        // Pinned entries stay whatever their size; a copy that cannot fit
        // beside them is not kept, and the others stay.
        for (int i = 0; i < 3; ++i)
            store.togglePin(store.items().at(3).id);
        store.add(entry(u"66"_s, shared));
        EXPECT_EQ(previews(store.items()), (QStringList { u"4*"_s, u"3*"_s, u"2*"_s, u"5"_s }));
        // One that fits exactly pushes out the rest.
        store.add(entry(u"6"_s, shared));
        EXPECT_EQ(previews(store.items()), (QStringList { u"4*"_s, u"3*"_s, u"2*"_s, u"6"_s }));
        atBound = store.items();
    }
    EXPECT_GE(QFileInfo(db()).size(), budget);
    EXPECT_EQ(ClipboardStore(settings, dir()).items(), atBound);
}
