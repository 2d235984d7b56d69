// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RelativeAge.h"
#include "SearchIndex.h"

#include <QAbstractListModel>

#include <optional>

class ClipboardStore;

// The history as the picker lists it: the store's entries that match the
// query, in the store's order. Follows the store's changes row by row, so
// that an open list keeps its place when a copy arrives.
class ClipListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        // The whole ClipItem.
        ItemRole = Qt::UserRole + 1,
        // How long ago it was copied, in words.
        AgeRole,
    };

    explicit ClipListModel(const ClipboardStore &store, QObject *parent = nullptr);

    QString query() const { return m_query; }
    void setQuery(const QString &query);
    // Prepares what the search needs in short slices between other events,
    // so that the first key typed after a start does not wait for it.
    void prepareSearch();

    // The entry at a row of the list; row must be valid.
    const ClipItem &item(qsizetype row) const;
    QList<ClipItem> items() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    bool isFiltered() const { return !m_query.isEmpty(); }
    qsizetype storeRow(qsizetype row) const { return isFiltered() ? m_rows[row] : row; }
    // The list row showing storeRow, or where it would go.
    qsizetype listRow(qsizetype storeRow) const;
    bool isListed(qsizetype storeRow) const;
    void shiftFrom(qsizetype storeRow, qsizetype by);

    void aboutToInsert(qsizetype row);
    void inserted(qsizetype row);
    void aboutToRemove(qsizetype row);
    void removed(qsizetype row);
    void aboutToMove(qsizetype from, qsizetype to);
    void moved(qsizetype from, qsizetype to);
    void changed(qsizetype row);
    void aboutToReset();
    void reset();

    void prepareSlice();

    const ClipboardStore &m_store;
    SearchIndex m_index;
    // The next store row to prepare; -1 while no preparation runs.
    qsizetype m_preparedUpTo = -1;
    RelativeAge m_age;
    QString m_query;
    // With a query: the store rows of the matching entries, ascending.
    QList<qsizetype> m_rows;
    // The list row a step under way takes away or moves, if listed.
    std::optional<qsizetype> m_pendingRow;
    bool m_pendingMove = false;
};
