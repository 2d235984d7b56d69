// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QHash>
#include <QList>

#include <chrono>

class SearchNeedle;

// The entries' searched texts (preview, full text, file paths) in the form
// the filter compares, made once per entry on its first search and kept by
// id: lower-casing 20 MB of history at each key press would take far longer
// than a frame. Entries forgotten here are made again when next searched.
class SearchIndex {
public:
    // The rows of items whose preview, else full text, else one of the file
    // paths contains query after lower-casing both sides, in the items'
    // order. An empty query keeps every row.
    QList<qsizetype> matchingRows(const QList<ClipItem> &items, const QString &query);
    bool matches(const ClipItem &item, const SearchNeedle &needle);

    // Makes the searched texts of items from row on, until they are all made
    // or the deadline has passed; the row to go on from, items.size() once
    // done. Lets the first key press after a start find them ready.
    qsizetype prepare(const QList<ClipItem> &items, qsizetype row, std::chrono::steady_clock::time_point deadline);

    void forget(const QUuid &id) { m_texts.remove(id); }
    // Forgets the entries that are no longer in items.
    void keepOnly(const QList<ClipItem> &items);
    qsizetype size() const { return m_texts.size(); }

private:
    struct Texts {
        QString preview;
        QString fullText;
        QStringList filePaths;
    };

    const Texts &textsOf(const ClipItem &item);

    QHash<QUuid, Texts> m_texts;
};
