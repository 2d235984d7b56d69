// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QList>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

class HistoryFolder;

// Writes the history file on a thread of its own, from snapshots of the list
// (the entries are shared, so a snapshot costs no copy of their texts): the
// main thread never waits for the encoding or the disk. Snapshots are written
// one at a time in the order they came; one that is still waiting when a
// newer one comes is dropped, since the newer one holds every change it had.
// So an older list never replaces a newer one on disk. The writer makes its
// own copy of the list as it takes a snapshot, so that the main thread's list
// is its own again and a change need not copy it.
class HistoryWriter {
public:
    explicit HistoryWriter(const HistoryFolder &folder);
    // Writes what is still waiting, then ends the thread.
    ~HistoryWriter();

    HistoryWriter(const HistoryWriter &) = delete;
    HistoryWriter &operator=(const HistoryWriter &) = delete;

    void save(QList<ClipItem> snapshot);
    // Writing, or a snapshot waiting to be.
    bool isBusy();
    // Returns once every snapshot handed over so far is written, or failed
    // to be.
    void flush();

private:
    void run();

    const HistoryFolder &m_folder;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<QList<ClipItem>> m_pending;
    bool m_writing = false;
    bool m_stopping = false;
    // Last: the thread starts once everything it uses is ready.
    std::thread m_thread;
};
