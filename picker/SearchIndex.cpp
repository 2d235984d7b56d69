// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchIndex.h"

#include "SearchNeedle.h"

#include <QSet>

#include <algorithm>

QList<qsizetype> SearchIndex::matchingRows(const QList<ClipItem> &items, const QString &query)
{
    QList<qsizetype> rows;
    rows.reserve(items.size());
    if (query.isEmpty()) {
        for (qsizetype row = 0; row < items.size(); ++row)
            rows.append(row);
        return rows;
    }
    const SearchNeedle needle(query);
    for (qsizetype row = 0; row < items.size(); ++row) {
        if (matches(items[row], needle))
            rows.append(row);
    }
    return rows;
}

bool SearchIndex::matches(const ClipItem &item, const SearchNeedle &needle)
{
    const Texts &texts = textsOf(item);
    if (needle.isFoundIn(texts.preview) || needle.isFoundIn(texts.fullText))
        return true;
    return std::any_of(
        texts.filePaths.cbegin(), texts.filePaths.cend(), [&](const QString &path) { return needle.isFoundIn(path); });
}

qsizetype SearchIndex::prepare(
    const QList<ClipItem> &items, qsizetype row, std::chrono::steady_clock::time_point deadline)
{
    for (; row < items.size(); ++row) {
        textsOf(items[row]);
        if (std::chrono::steady_clock::now() >= deadline)
            return row + 1;
    }
    return items.size();
}

void SearchIndex::keepOnly(const QList<ClipItem> &items)
{
    QSet<QUuid> kept;
    kept.reserve(items.size());
    for (const ClipItem &item : items)
        kept.insert(item.id);
    m_texts.removeIf([&](const auto &entry) { return !kept.contains(entry.key()); });
}

const SearchIndex::Texts &SearchIndex::textsOf(const ClipItem &item)
{
    auto found = m_texts.find(item.id);
    if (found != m_texts.end())
        return *found;
    Texts texts;
    texts.preview = SearchNeedle::comparableForm(item.preview);
    // A short text's preview is its full text: one copy serves both.
    if (item.fullText)
        texts.fullText = *item.fullText == item.preview ? texts.preview : SearchNeedle::comparableForm(*item.fullText);
    if (item.filePaths) {
        for (const QString &path : *item.filePaths)
            texts.filePaths.append(SearchNeedle::comparableForm(path));
    }
    return *m_texts.insert(item.id, std::move(texts));
}
