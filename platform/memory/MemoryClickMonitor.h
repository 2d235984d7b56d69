// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClickMonitor.h"

// Clicks in memory, for tests: click() reports one while started.
class MemoryClickMonitor : public ClickMonitor {
    Q_OBJECT

public:
    using ClickMonitor::ClickMonitor;

    void start() override { m_started = true; }
    void stop() override { m_started = false; }
    bool isStarted() const { return m_started; }

    void click()
    {
        if (m_started)
            Q_EMIT clicked();
    }

private:
    bool m_started = false;
};
