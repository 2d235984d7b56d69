// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"
#include "HistoryFolder.h"

#include <QList>
#include <QObject>

class AppSettings;

// The clipboard history: pinned entries first, then the others, newest first.
// The only writer of the list; every change is saved at once, so the file
// always holds the last change.
class ClipboardStore : public QObject {
    Q_OBJECT

public:
    // Prepares the folder at dirPath and loads its history. The limit is read
    // from settings at each trim.
    ClipboardStore(const AppSettings &settings, const QString &dirPath, QObject *parent = nullptr);

    const QList<ClipItem> &items() const { return m_items; }
    QString imagesDirPath() const { return m_folder.imagesDirPath(); }
    // Where an image entry's PNG is; empty for other entries.
    QString imagePath(const ClipItem &item) const;

    // Stores a capture under a fresh id at the top, unless it repeats the
    // newest unpinned entry (same kind, preview and full text).
    void add(const ClipItem &item);
    // Keeps the newest historyLimit unpinned entries (at least one) behind the
    // pinned ones. Deletes no file and does not save.
    void enforceLimit();
    // Flips the entry's pin and sorts: pinned first, then newest first, ties
    // in their previous order. An unknown id changes and saves nothing.
    void togglePin(const QUuid &id);
    // Removes the entry and deletes its image file. Saves even when the id is
    // unknown.
    void remove(const QUuid &id);
    // Removes every unpinned entry and their image files; saves.
    void clearUnpinned();

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
    void save() const;

    const AppSettings &m_settings;
    HistoryFolder m_folder;
    QList<ClipItem> m_items;
};
