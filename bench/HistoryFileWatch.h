// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <chrono>
#include <optional>

// Notices, through inotify, each time clips.json in a history folder is
// replaced or written, and tells when it came to hold a given newest entry.
class HistoryFileWatch {
public:
    using Clock = std::chrono::steady_clock;

    // The folder must exist.
    explicit HistoryFileWatch(const QString &dirPath);
    ~HistoryFileWatch();

    HistoryFileWatch(const HistoryFileWatch &) = delete;
    HistoryFileWatch &operator=(const HistoryFileWatch &) = delete;

    bool isValid() const { return m_fd >= 0 && m_watch >= 0; }

    // Forgets the changes noticed so far, unread.
    void drain();
    // Waits until a change leaves clips.json with text as its newest entry,
    // and gives the moment that change was noticed; nothing after timeout.
    std::optional<Clock::time_point> waitForNewest(const QString &text, std::chrono::milliseconds timeout);

private:
    bool holdsNewest(const QString &text) const;

    QString m_filePath;
    int m_fd = -1;
    int m_watch = -1;
};
