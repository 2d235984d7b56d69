// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// What an entry holds. Colour entries are never captured; they exist so that
// a history holding them still loads and shows.
enum class ClipKind {
    Text,
    Url,
    Image,
    File,
    Color,
};

// The stored word: "text", "url", "image", "file" or "color".
QString clipKindName(ClipKind kind);
// Exact and case-sensitive: "URL" or "link" are no kind.
std::optional<ClipKind> clipKindFromName(QStringView name);
