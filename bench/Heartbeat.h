// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>

#include <atomic>
#include <chrono>

// A timer firing every few milliseconds on the thread that starts it: the
// longest gap between two firings is the longest that thread's event loop was
// held up. Any thread may read the gaps.
class Heartbeat {
public:
    using Clock = std::chrono::steady_clock;

    explicit Heartbeat(std::chrono::milliseconds interval = std::chrono::milliseconds(2));

    // On the thread to watch, which must run an event loop.
    void start();

    // The longest gap since the previous call (or start()), a gap still
    // running included; the next window starts now. Any thread.
    std::chrono::nanoseconds takeLongestGap();

private:
    void beat();

    QTimer m_timer;
    std::atomic<Clock::rep> m_lastBeat { 0 };
    std::atomic<Clock::rep> m_windowStart { 0 };
    std::atomic<Clock::rep> m_longest { 0 };
};
