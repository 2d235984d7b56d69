// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSet>
#include <QString>

// Applications whose copies stay out of the history while the privacy switch
// is on: what they copy is a password.
namespace PasswordManagers {

// Identifiers compared exactly, as the workspace reports them: desktop-entry
// ids and window classes of the Linux password managers, and the bundle
// identifiers a history shared with a Mac may carry.
const QSet<QString> &identifiers();

} // namespace PasswordManagers
