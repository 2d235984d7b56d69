// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The entries history_save_loop adds, shared with the test that checks what it
// left on disk.
namespace SaveLoopEntries {

// About 40 x 20 KB: a history file near 800 KB, so that a kill often lands
// inside a save.
constexpr qint64 historyLimit = 40;
constexpr qsizetype textLength = 20'000;

inline QString preview(qint64 sequence)
{
    return QString::number(sequence);
}

// The number repeated up to the full length: a cut or mixed-up text shows.
inline QString text(qint64 sequence)
{
    const QString unit = QStringLiteral("entry ") + QString::number(sequence) + u' ';
    QString text;
    text.reserve(textLength + unit.size());
    while (text.size() < textLength)
        text += unit;
    text.truncate(textLength);
    return text;
}

} // namespace SaveLoopEntries
