// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextPreview.h"

#include <QTextBoundaryFinder>

QString TextPreview::cut(const QString &text)
{
    // Each cluster is at least one code unit: shorter texts are whole.
    if (text.size() <= maxCharacters)
        return text;
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, text);
    for (int count = 0; count < maxCharacters; ++count) {
        if (clusters.toNextBoundary() < 0)
            return text;
    }
    return text.left(clusters.position());
}

QString TextPreview::cutOneLine(const QString &text)
{
    // Line feeds go before the cut: a CR LF pair is one character, a CR and
    // a space are two. A boundary found before the end of a head of the text
    // is one in the whole text as well; one at its very end may not be.
    for (qsizetype length = 4 * maxCharacters;; length *= 2) {
        QString head = text.left(length);
        head.replace(u'\n', u' ');
        QString preview = cut(head);
        if (preview.size() < head.size() || head.size() == text.size())
            return preview;
    }
}
