// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipListModel.h"

#include "ClipboardStore.h"
#include "ClipRowContent.h"
#include "SearchNeedle.h"

#include <QTimer>

#include <algorithm>

ClipListModel::ClipListModel(const ClipboardStore &store, QObject *parent)
    : QAbstractListModel(parent)
    , m_store(store)
{
    connect(&store, &ClipboardStore::itemAboutToBeInserted, this, &ClipListModel::aboutToInsert);
    connect(&store, &ClipboardStore::itemInserted, this, &ClipListModel::inserted);
    connect(&store, &ClipboardStore::itemAboutToBeRemoved, this, &ClipListModel::aboutToRemove);
    connect(&store, &ClipboardStore::itemRemoved, this, &ClipListModel::removed);
    connect(&store, &ClipboardStore::itemAboutToBeMoved, this, &ClipListModel::aboutToMove);
    connect(&store, &ClipboardStore::itemMoved, this, &ClipListModel::moved);
    connect(&store, &ClipboardStore::itemChanged, this, &ClipListModel::changed);
    connect(&store, &ClipboardStore::itemsAboutToBeReset, this, &ClipListModel::aboutToReset);
    connect(&store, &ClipboardStore::itemsReset, this, &ClipListModel::reset);
}

void ClipListModel::setQuery(const QString &query)
{
    // Each showing empties the query: most of the time it already is, and a
    // reset would lay out the list again for nothing.
    if (query == m_query)
        return;
    beginResetModel();
    m_query = query;
    m_rows = isFiltered() ? m_index.matchingRows(m_store.items(), m_query) : QList<qsizetype>();
    endResetModel();
}

void ClipListModel::prepareSearch()
{
    if (m_preparedUpTo >= 0)
        return;
    m_preparedUpTo = 0;
    prepareSlice();
}

void ClipListModel::prepareSlice()
{
    // Short enough that a key press or a repaint never waits long for it.
    constexpr std::chrono::milliseconds slice(4);
    // Rows may shift between slices: an entry missed is made at its first
    // search, as without this.
    m_preparedUpTo = m_index.prepare(
        m_store.items(), std::min(m_preparedUpTo, m_store.items().size()), std::chrono::steady_clock::now() + slice);
    if (m_preparedUpTo >= m_store.items().size()) {
        m_preparedUpTo = -1;
        return;
    }
    QTimer::singleShot(0, this, &ClipListModel::prepareSlice);
}

const ClipItem &ClipListModel::item(qsizetype row) const
{
    return m_store.items()[storeRow(row)];
}

QList<ClipItem> ClipListModel::items() const
{
    if (!isFiltered())
        return m_store.items();
    QList<ClipItem> result;
    result.reserve(m_rows.size());
    for (const qsizetype row : m_rows)
        result.append(m_store.items()[row]);
    return result;
}

int ClipListModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid())
        return 0;
    return int(isFiltered() ? m_rows.size() : m_store.items().size());
}

QVariant ClipListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const ClipItem &entry = item(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return ClipRowContent::previewLine(entry);
    case Qt::AccessibleTextRole:
        return ClipRowContent::spokenText(entry, m_age.text(entry.createdAt, ClipItem::now()));
    case ItemRole:
        return QVariant::fromValue(entry);
    case AgeRole:
        return m_age.text(entry.createdAt, ClipItem::now());
    default:
        return {};
    }
}

qsizetype ClipListModel::listRow(qsizetype storeRow) const
{
    return std::lower_bound(m_rows.cbegin(), m_rows.cend(), storeRow) - m_rows.cbegin();
}

bool ClipListModel::isListed(qsizetype storeRow) const
{
    return std::binary_search(m_rows.cbegin(), m_rows.cend(), storeRow);
}

void ClipListModel::shiftFrom(qsizetype storeRow, qsizetype by)
{
    for (qsizetype i = listRow(storeRow); i < m_rows.size(); ++i)
        m_rows[i] += by;
}

void ClipListModel::aboutToInsert(qsizetype row)
{
    if (!isFiltered())
        beginInsertRows({}, int(row), int(row));
}

void ClipListModel::inserted(qsizetype row)
{
    if (!isFiltered()) {
        endInsertRows();
        return;
    }
    shiftFrom(row, 1);
    if (!m_index.matches(m_store.items()[row], SearchNeedle(m_query)))
        return;
    const qsizetype at = listRow(row);
    beginInsertRows({}, int(at), int(at));
    m_rows.insert(at, row);
    endInsertRows();
}

void ClipListModel::aboutToRemove(qsizetype row)
{
    m_index.forget(m_store.items()[row].id);
    if (!isFiltered()) {
        beginRemoveRows({}, int(row), int(row));
        return;
    }
    if (!isListed(row))
        return;
    m_pendingRow = listRow(row);
    beginRemoveRows({}, int(*m_pendingRow), int(*m_pendingRow));
}

void ClipListModel::removed(qsizetype row)
{
    if (!isFiltered()) {
        endRemoveRows();
        return;
    }
    if (m_pendingRow)
        m_rows.removeAt(*m_pendingRow);
    shiftFrom(row, -1);
    if (std::exchange(m_pendingRow, std::nullopt))
        endRemoveRows();
}

namespace {

// Where an entry at storeRow ends up when the one at from moves to to.
qsizetype afterMove(qsizetype storeRow, qsizetype from, qsizetype to)
{
    if (storeRow == from)
        return to;
    if (from < to && storeRow > from && storeRow <= to)
        return storeRow - 1;
    if (to < from && storeRow >= to && storeRow < from)
        return storeRow + 1;
    return storeRow;
}

// beginMoveRows() counts the destination before the move.
int destination(qsizetype from, qsizetype to)
{
    return int(to > from ? to + 1 : to);
}

} // namespace

void ClipListModel::aboutToMove(qsizetype from, qsizetype to)
{
    if (!isFiltered()) {
        m_pendingMove = beginMoveRows({}, int(from), int(from), {}, destination(from, to));
        return;
    }
    if (!isListed(from))
        return;
    const qsizetype oldRow = listRow(from);
    const qsizetype newRow = std::count_if(m_rows.cbegin(), m_rows.cend(),
        [&](qsizetype other) { return other != from && afterMove(other, from, to) < to; });
    if (newRow != oldRow)
        m_pendingMove = beginMoveRows({}, int(oldRow), int(oldRow), {}, destination(oldRow, newRow));
}

void ClipListModel::moved(qsizetype from, qsizetype to)
{
    if (isFiltered()) {
        for (qsizetype &row : m_rows)
            row = afterMove(row, from, to);
        std::sort(m_rows.begin(), m_rows.end());
    }
    if (std::exchange(m_pendingMove, false))
        endMoveRows();
}

void ClipListModel::changed(qsizetype row)
{
    if (isFiltered() && !isListed(row))
        return;
    const QModelIndex changedIndex = index(int(isFiltered() ? listRow(row) : row));
    Q_EMIT dataChanged(changedIndex, changedIndex);
}

void ClipListModel::aboutToReset()
{
    beginResetModel();
}

void ClipListModel::reset()
{
    m_index.keepOnly(m_store.items());
    if (isFiltered())
        m_rows = m_index.matchingRows(m_store.items(), m_query);
    endResetModel();
}
