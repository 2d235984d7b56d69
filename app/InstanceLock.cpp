// SPDX-License-Identifier: GPL-3.0-or-later
#include "InstanceLock.h"

#include "Workspace.h"

#include <QStandardPaths>

InstanceLock::InstanceLock()
    : m_lock(runtimePath(QStringLiteral(".lock")))
{
    // Only a dead owner makes the lock stale: a copy that has run for hours
    // still holds it.
    m_lock.setStaleLockTime(0);
}

QString InstanceLock::runtimePath(const QString &suffix)
{
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + u'/' + Workspace::ownIdentifier + suffix;
}
