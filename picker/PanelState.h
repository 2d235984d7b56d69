// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

// What the picker shows: the search text as typed and the selected row, an
// index into the filtered list (not an entry). Observers hear of each change
// before it happens and after.
class PanelState : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    QString query() const { return m_query; }
    qint64 selection() const { return m_selection; }

    // Every assignment, even of the same text, puts the selection back on
    // the first row.
    void setQuery(const QString &query);
    void setSelection(qint64 selection);

Q_SIGNALS:
    // Sent before the query or the selection changes.
    void aboutToChange();
    void queryChanged(const QString &query);
    void selectionChanged(qint64 selection);

private:
    QString m_query;
    qint64 m_selection = 0;
};
