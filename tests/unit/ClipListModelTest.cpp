// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipListModel.h"
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "HistoryFolder.h"
#include "SearchIndex.h"
#include "TestFolder.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace {

class ClipListModelTest : public TestFolder {
protected:
    ClipListModelTest()
        : settings(path(u"defaults.json"_s))
    {
        settings.setHistoryLimit(limit);
    }

    // A full history: even entries hold "match", odd ones "other"; the
    // newest first.
    std::unique_ptr<ClipboardStore> fullStore(const QString &name)
    {
        QList<ClipItem> items;
        for (int i = limit - 1; i >= 0; --i)
            items.append(textClip(u"%1 %2"_s.arg(i % 2 ? u"other"_s : u"match"_s).arg(i), i));
        HistoryFolder(path(name)).save(items);
        return std::make_unique<ClipboardStore>(settings, path(name));
    }

    static constexpr int limit = 60;
    AppSettings settings;
};

} // namespace

TEST_F(ClipListModelTest, FollowsEachStoreChangeRowByRow)
{
    const auto pinAt = [](ClipboardStore &store, int row) { store.togglePin(store.items()[row].id); };
    struct Row {
        const char *name;
        std::function<void(ClipboardStore &)> change;
        bool reloads;
    };
    const QList<Row> rows {
        { "a matching copy", [](ClipboardStore &s) { s.add(textClip(u"match new"_s, 1e6)); }, false },
        { "another copy", [](ClipboardStore &s) { s.add(textClip(u"other new"_s, 1e6)); }, false },
        { "pin a listed entry", [&](ClipboardStore &s) { pinAt(s, 10); }, false },
        { "pin an unlisted entry", [&](ClipboardStore &s) { pinAt(s, 11); }, false },
        { "unpin", [&](ClipboardStore &s) { pinAt(s, 0), pinAt(s, 0); }, false },
        { "a copy behind pinned entries", [&](ClipboardStore &s) { pinAt(s, 30), s.add(textClip(u"match x"_s, 2e6)); },
            false },
        { "remove a listed entry", [](ClipboardStore &s) { s.remove(s.items()[4].id); }, false },
        { "remove an unlisted entry", [](ClipboardStore &s) { s.remove(s.items()[5].id); }, false },
        { "clear the unpinned entries", [&](ClipboardStore &s) { pinAt(s, 3), s.clearUnpinned(); }, true },
    };
    for (const QString &query : { QString(), u"MATCH"_s }) {
        for (const Row &row : rows) {
            SCOPED_TRACE(row.name + QString(u" with query "_s + query).toStdString());
            const auto owned = fullStore(u"Zettly-%1"_s.arg(qHash(query) ^ qHash(QLatin1String(row.name))));
            ClipboardStore &store = *owned;
            ClipListModel model(store);
            model.setQuery(query);
            QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
            QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
            row.change(store);
            SearchIndex fresh;
            QList<ClipItem> expected;
            for (const qsizetype storeRow : fresh.matchingRows(store.items(), query))
                expected.append(store.items()[storeRow]);
            EXPECT_EQ(previews(model.items()), previews(expected));
            EXPECT_EQ(resets.size(), row.reloads ? 1 : 0);
        }
    }
}
