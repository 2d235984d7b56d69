// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipKind.h"

#include <array>

namespace {
const std::array<QString, 5> names {
    QStringLiteral("text"),
    QStringLiteral("url"),
    QStringLiteral("image"),
    QStringLiteral("file"),
    QStringLiteral("color"),
};
}

QString clipKindName(ClipKind kind)
{
    return names.at(static_cast<size_t>(kind));
}

std::optional<ClipKind> clipKindFromName(QStringView name)
{
    for (size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name)
            return static_cast<ClipKind>(i);
    }
    return std::nullopt;
}
