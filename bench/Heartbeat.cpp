// SPDX-License-Identifier: GPL-3.0-or-later
#include "Heartbeat.h"

#include <algorithm>

namespace {

Heartbeat::Clock::rep ticks()
{
    return Heartbeat::Clock::now().time_since_epoch().count();
}

} // namespace

Heartbeat::Heartbeat(std::chrono::milliseconds interval)
{
    // The default coarse timer may fire up to 5 % late by design, which
    // would read as a stall.
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(interval);
    QObject::connect(&m_timer, &QTimer::timeout, [this] { beat(); });
}

void Heartbeat::start()
{
    const Clock::rep now = ticks();
    m_lastBeat = now;
    m_windowStart = now;
    m_longest = 0;
    m_timer.start();
}

std::chrono::nanoseconds Heartbeat::takeLongestGap()
{
    const Clock::rep now = ticks();
    const Clock::rep windowStart = m_windowStart.exchange(now);
    // A stall still going on belongs to this window too: its end may come
    // only after the caller has moved on.
    const Clock::rep running = now - std::max(m_lastBeat.load(), windowStart);
    const Clock::rep longest = std::max(m_longest.exchange(0), running);
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::duration(longest));
}

void Heartbeat::beat()
{
    const Clock::rep now = ticks();
    const Clock::rep previous = m_lastBeat.exchange(now);
    // Only the part of the gap inside the current window counts in it.
    const Clock::rep gap = now - std::max(previous, m_windowStart.load());
    Clock::rep longest = m_longest.load();
    while (gap > longest && !m_longest.compare_exchange_weak(longest, gap)) { }
}
