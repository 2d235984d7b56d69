// SPDX-License-Identifier: GPL-3.0-or-later
#include "VersionComparison.h"

#include <QList>

#include <algorithm>

namespace {

qsizetype leadingDigits(QStringView part)
{
    qsizetype count = 0;
    // Only ASCII digits: QChar::isDigit() also accepts other scripts' digits.
    while (count < part.size() && part[count] >= u'0' && part[count] <= u'9')
        ++count;
    return count;
}

int sign(int value)
{
    return (value > 0) - (value < 0);
}

// Compares digit strings of any length without converting them, so that no
// number in a feed can overflow.
int compareNumbers(QStringView a, QStringView b)
{
    while (a.size() > 1 && a.front() == u'0')
        a = a.sliced(1);
    while (b.size() > 1 && b.front() == u'0')
        b = b.sliced(1);
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return sign(a.compare(b));
}

int compareParts(QStringView a, QStringView b)
{
    if (a.isEmpty())
        a = u"0";
    if (b.isEmpty())
        b = u"0";
    const qsizetype digitsA = leadingDigits(a);
    const qsizetype digitsB = leadingDigits(b);
    if (digitsA == 0 || digitsB == 0)
        return sign(a.compare(b));
    if (const int byNumber = compareNumbers(a.first(digitsA), b.first(digitsB)))
        return byNumber;
    return sign(a.sliced(digitsA).compare(b.sliced(digitsB)));
}

} // namespace

int VersionComparison::compare(QStringView a, QStringView b)
{
    const auto partsA = a.split(u'.');
    const auto partsB = b.split(u'.');
    const qsizetype count = std::max(partsA.size(), partsB.size());
    for (qsizetype i = 0; i < count; ++i) {
        const QStringView partA = i < partsA.size() ? partsA[i] : QStringView();
        const QStringView partB = i < partsB.size() ? partsB[i] : QStringView();
        if (const int order = compareParts(partA, partB))
            return order;
    }
    return 0;
}
