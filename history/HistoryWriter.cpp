// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryWriter.h"

#include "HistoryFolder.h"

HistoryWriter::HistoryWriter(const HistoryFolder &folder)
    : m_folder(folder)
    , m_thread(&HistoryWriter::run, this)
{
}

HistoryWriter::~HistoryWriter()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void HistoryWriter::save(QList<ClipItem> snapshot)
{
    {
        const std::lock_guard lock(m_mutex);
        m_pending = std::move(snapshot);
    }
    m_changed.notify_all();
}

bool HistoryWriter::isBusy()
{
    const std::lock_guard lock(m_mutex);
    return m_pending || m_writing;
}

void HistoryWriter::flush()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_pending && !m_writing; });
}

void HistoryWriter::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_pending || m_stopping; });
        // Stopping with nothing left to write.
        if (!m_pending)
            return;
        QList<ClipItem> snapshot = std::move(*m_pending);
        m_pending.reset();
        m_writing = true;
        lock.unlock();
        // Our own copy, so that the store's list is its own again.
        snapshot.detach();
        // A failed save keeps the previous file; the next change tries again.
        m_folder.save(snapshot);
        // Entries the store has dropped since are freed here, off the main
        // thread.
        snapshot = {};
        lock.lock();
        m_writing = false;
        m_changed.notify_all();
    }
}
