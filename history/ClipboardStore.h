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

private:
    void assignItems(QList<ClipItem> items);
    void save() const;

    const AppSettings &m_settings;
    HistoryFolder m_folder;
    QList<ClipItem> m_items;
};
