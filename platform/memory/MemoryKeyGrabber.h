// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyGrabber.h"

#include <QSet>

#include <optional>
#include <utility>

// A desktop's key grabs in memory, for tests: combinations listed as taken
// are refused, and press() plays the grabbed combination.
class MemoryKeyGrabber : public KeyGrabber {
    Q_OBJECT

public:
    using Combination = std::pair<quint32, quint32>;

    using KeyGrabber::KeyGrabber;

    // Another program holds this combination.
    void takeByAnotherProgram(Combination combination) { m_taken.insert(combination); }
    // The combination grabbed now, if any.
    std::optional<Combination> grabbed() const { return m_grabbed; }
    // The user pressed this combination: reported when it is the one grabbed.
    void press(Combination combination);
    // Another program took the grabbed combination when the keymap changed.
    void loseGrab()
    {
        m_grabbed.reset();
        Q_EMIT grabLost();
    }

    bool grab(quint32 keyCode, quint32 modifiers) override;
    void ungrab() override { m_grabbed.reset(); }

private:
    QSet<Combination> m_taken;
    std::optional<Combination> m_grabbed;
};
