// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringMatcher>

// A search text ready to be looked for many times: one contiguous run, no
// tokens, no folding of accents.
class SearchNeedle {
public:
    explicit SearchNeedle(const QString &query);

    // The form both sides are compared in: full Unicode lower-casing (so "İ"
    // becomes "i" plus a combining dot and "ẞ" becomes "ß"), then canonical
    // composition (NFC), so that a precomposed "é" and "e" followed by a
    // combining acute accent find each other. Returns text itself, shared,
    // when it is already in that form.
    static QString comparableForm(const QString &text);

    bool isEmpty() const { return m_text.isEmpty(); }
    // haystack must be in comparableForm().
    bool isFoundIn(QStringView haystack) const;

private:
    QString m_text;
    QStringMatcher m_matcher;
};
