// SPDX-License-Identifier: GPL-3.0-or-later
#include "MemoryWorkspace.h"

void MemoryWorkspace::setFrontmostIdentifier(const QString &identifier)
{
    m_frontmost = RunningApp { 1, identifier };
}
