// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

// Orders release versions such as "1.9" and "1.10".
namespace VersionComparison {

// Negative, zero or positive as a is older than, the same as or newer than b.
// Dot-separated parts compare by their leading number ("10" after "9"), then
// by what follows it as text; a part without a leading number compares as
// text. Missing parts count as 0, so "1.0" equals "1".
int compare(QStringView a, QStringView b);

} // namespace VersionComparison
