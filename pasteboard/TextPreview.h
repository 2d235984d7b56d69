// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The one-line texts shown in the picker.
namespace TextPreview {

// How many user-perceived characters a preview keeps.
constexpr int maxCharacters = 200;

// The first maxCharacters user-perceived characters (extended grapheme
// clusters): a letter with its accents, a flag or an emoji with its skin tone
// is never split.
QString cut(const QString &text);
// The cut of the text with each line feed replaced by a space, without
// copying a long text whole: only as much of its start as the cut needs.
QString cutOneLine(const QString &text);

} // namespace TextPreview
