// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PasteKeystroke.h"

#include <QList>

// A paste keystroke in memory, for tests: remembers each window it was asked
// to paste into while trusted.
class MemoryPasteKeystroke : public PasteKeystroke {
public:
    void setTrusted(bool trusted) { m_trusted = trusted; }
    // The targets of the pastes sent, in call order.
    QList<RunningApp> sentTo() const { return m_sentTo; }

    bool isTrusted() const override { return m_trusted; }
    void sendPaste(const RunningApp &target) override
    {
        if (m_trusted)
            m_sentTo.append(target);
    }

private:
    bool m_trusted = true;
    QList<RunningApp> m_sentTo;
};
