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
    // One character: the vectorised search beats the skip table.
    if (m_text.size() == 1)
        return haystack.contains(m_text.front());
    return m_matcher.indexIn(haystack) >= 0;
}
