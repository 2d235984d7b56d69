// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QColor>
#include <QString>

#include <optional>

// What a row of the picker shows for an entry, apart from the drawing.
namespace ClipRowContent {

// A freedesktop icon name and the colour it is drawn in. An invalid tint
// stands for the theme's secondary text colour.
struct Symbol {
    QString iconName;
    QColor tint;

    friend bool operator==(const Symbol &, const Symbol &) = default;
};

// The lower-cased extension of a file entry's first path (the text after
// the last dot of its last component); nothing for other entries, or when
// there is none.
std::optional<QString> fileExt(const ClipItem &item);
// The symbol of the entry's badge, by kind and, for files, by extension.
Symbol symbol(const ClipItem &item);
// "3 fichiers · .pdf", "2 fichiers", ".PDF", or nothing.
QString subtitle(const ClipItem &item);
// A file entry's first path, if a file or folder is there now.
std::optional<QString> existingFirstPath(const ClipItem &item);
// The icon theme names for what lies at path, best first: its MIME type's
// icon, then the generic one; "folder" for a folder.
QStringList fileIconNames(const QString &path);
// The preview on one line: line breaks and tabs read as spaces.
QString previewLine(const ClipItem &item);
// What a screen reader says for the row: preview, subtitle and age.
QString spokenText(const ClipItem &item, const QString &age);

} // namespace ClipRowContent
