// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLockFile>

// Keeps a second copy of Zettly from running in the same user session: a
// lock file in $XDG_RUNTIME_DIR held for the life of the process. A copy that
// crashed leaves a lock whose process is gone, which the next start takes
// over.
class InstanceLock {
public:
    InstanceLock();

    // False when another running copy holds the lock.
    bool tryLock() { return m_lock.tryLock(0); }

    // A file of the running copy's in $XDG_RUNTIME_DIR, named like the lock
    // with another suffix.
    static QString runtimePath(const QString &suffix);

private:
    QLockFile m_lock;
};
