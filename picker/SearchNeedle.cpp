// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchNeedle.h"

SearchNeedle::SearchNeedle(const QString &query)
    : m_text(comparableForm(query))
    , m_matcher(m_text, Qt::CaseSensitive)
{
}

QString SearchNeedle::comparableForm(const QString &text)
{
    QString form = text.toLower().normalized(QString::NormalizationForm_C);
    // Most texts are already in that form: keep one copy of them, not two.
    return form == text ? text : form;
}

bool SearchNeedle::isFoundIn(QStringView haystack) const
{
    if (haystack.size() < m_text.size())
        return false;
    // Qt's vectorised search for one character reads 8 or 16 at a time,
    // several times faster than the skip table, as long as that character
    // is rare enough; a text where it comes too often is left to the table.
    const QChar first = m_text.front();
    const QStringView rest = QStringView(m_text).mid(1);
    const qsizetype enoughTries = 16 + haystack.size() / 256;
    qsizetype from = 0;
    for (qsizetype tries = 0; tries < enoughTries; ++tries) {
        const qsizetype at = haystack.indexOf(first, from);
        if (at < 0 || at + m_text.size() > haystack.size())
            return false;
        if (haystack.mid(at + 1, rest.size()) == rest)
            return true;
        from = at + 1;
    }
    return m_matcher.indexIn(haystack, from) >= 0;
}
