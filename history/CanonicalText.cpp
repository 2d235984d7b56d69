// SPDX-License-Identifier: GPL-3.0-or-later
#include "CanonicalText.h"

#include <QHashFunctions>

namespace CanonicalText {

bool equal(const QString &a, const QString &b)
{
    if (a == b)
        return true;
    // normalized() returns at once for text that is already in the form asked
    // for, which covers plain ASCII.
    return a.normalized(QString::NormalizationForm_D) == b.normalized(QString::NormalizationForm_D);
}

bool equal(const std::optional<QString> &a, const std::optional<QString> &b)
{
    if (a.has_value() != b.has_value())
        return false;
    return !a || equal(*a, *b);
}

size_t hash(const QString &text, size_t seed)
{
    return qHash(text.normalized(QString::NormalizationForm_D), seed);
}

} // namespace CanonicalText
