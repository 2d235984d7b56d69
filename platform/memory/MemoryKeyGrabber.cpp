// SPDX-License-Identifier: GPL-3.0-or-later
#include "MemoryKeyGrabber.h"

void MemoryKeyGrabber::press(Combination combination)
{
    if (m_grabbed == combination)
        Q_EMIT pressed();
}

bool MemoryKeyGrabber::grab(quint32 keyCode, quint32 modifiers)
{
    m_grabbed.reset();
    if (m_taken.contains({ keyCode, modifiers }))
        return false;
    m_grabbed = Combination { keyCode, modifiers };
    return true;
}
