// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// Text compared as the user reads it: a precomposed "é" equals "e" followed by
// a combining acute accent (Unicode canonical equivalence). No case folding,
// no trimming.
namespace CanonicalText {

bool equal(const QString &a, const QString &b);
// Both absent, or both present and equal.
bool equal(const std::optional<QString> &a, const std::optional<QString> &b);
// Consistent with equal(): canonically equivalent texts hash alike.
size_t hash(const QString &text, size_t seed = 0);

} // namespace CanonicalText
