// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"
#include "HistoryFolder.h"
#include "HistoryWriter.h"

#include <QList>
#include <QObject>
#include <QTimer>

#include <optional>

class AppSettings;

// The clipboard history: pinned entries first, then the others, newest first.
// The only writer of the list. Every change is saved at once, on a writer
// thread; the store waits for that save to finish when it is destroyed, so the
// file holds the last change once the store is gone.
class ClipboardStore : public QObject {
    Q_OBJECT

public:
    // The whole history's size bound, counted as one byte per UTF-16 unit of
    // its texts plus entryOverhead per entry: about the size of clips.json for
    // ASCII text (up to three times that for other scripts, six if every
    // character were a control character). Everything within it loads back.
    static constexpr qint64 historyByteBudget = 256 * 1024 * 1024;
    // An entry's members other than its texts, as written.
    static constexpr qint64 entryOverhead = 128;
    static qint64 storedSize(const ClipItem &item);

    // Prepares the folder at dirPath and loads its history. The limit is read
    // from settings at each trim.
    ClipboardStore(const AppSettings &settings, const QString &dirPath, QObject *parent = nullptr);
    // Hands the last change to the writer, which writes it before it ends.
    ~ClipboardStore() override;

    const QList<ClipItem> &items() const { return m_items; }
    QString imagesDirPath() const { return m_folder.imagesDirPath(); }
    // Where an image entry's PNG is; empty for other entries.
    QString imagePath(const ClipItem &item) const;

    // Stores a capture under a fresh id at the top, unless it repeats the
    // newest unpinned entry (same kind, preview and full text), or it does
    // not fit beside the pinned entries within historyByteBudget: such a copy
    // is not kept, and the history stays as it was. Returns the id under
    // which the copy is in the history (the new entry's, or the repeated
    // one's), nothing when it was not kept.
    std::optional<QUuid> add(const ClipItem &item);
    // Keeps the newest historyLimit unpinned entries (at least one) behind the
    // pinned ones, fewer when they would take the history past
    // historyByteBudget: the oldest go first. Pinned entries always stay.
    // Deletes no file and does not save.
    void enforceLimit();
    // Flips the entry's pin and sorts: pinned first, then newest first, ties
    // in their previous order. An unknown id changes and saves nothing.
    void togglePin(const QUuid &id);
    // Removes the entry and deletes its image file. Saves even when the id is
    // unknown.
    void remove(const QUuid &id);
    // Removes every unpinned entry and their image files; saves.
    void clearUnpinned();
    // Returns once the file holds the last change (or its save failed).
    void flush();

Q_SIGNALS:
    // Sent before each change of items().
    void aboutToChange();
    // Sent after items() changed.
    void changed();

    // Between aboutToChange() and changed(), each operation is told step by
    // step, in pairs around the step, so that a list model can follow it
    // without reloading: rows are those of items() at the time of the step.
    void itemAboutToBeInserted(qsizetype row);
    void itemInserted(qsizetype row);
    void itemAboutToBeRemoved(qsizetype row);
    void itemRemoved(qsizetype row);
    // The entry at from ends up at to, as with QList::move().
    void itemAboutToBeMoved(qsizetype from, qsizetype to);
    void itemMoved(qsizetype from, qsizetype to);
    // The entry at row stayed in place but changed (its pin).
    void itemChanged(qsizetype row);
    // Anything that is not a few such steps: the whole list may differ.
    void itemsAboutToBeReset();
    void itemsReset();

private:
    void assignItems(QList<ClipItem> items);
    // Turns items() into target one announced step at a time; false, having
    // done nothing, when that would take more than a few steps.
    bool applyInSteps(const QList<ClipItem> &target);
    void save();
    void handOverWantedSave();
    // add() for a list shared with nobody: changed where it is, step by step.
    void addInPlace(ClipItem item);
    // The entries enforceLimit() keeps of items, with newest, when given,
    // taken as the newest unpinned one.
    QList<ClipItem> withinLimit(const QList<ClipItem> &items, ClipItem *newest) const;

    const AppSettings &m_settings;
    HistoryFolder m_folder;
    QList<ClipItem> m_items;
    // Last: destroyed first, writing what is still waiting.
    // A change not yet handed to the writer, which was busy.
    bool m_saveWanted = false;
    QTimer m_saveRetry;
    HistoryWriter m_writer;
};
