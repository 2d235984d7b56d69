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
