// SPDX-License-Identifier: GPL-3.0-or-later
#include "FixedKeyLayout.h"

FixedKeyLayout::FixedKeyLayout(QHash<quint32, QString> characters)
    : m_characters(std::move(characters))
{
}

void FixedKeyLayout::setCharacter(quint32 keyCode, const QString &character)
{
    m_characters.insert(keyCode, character);
}

std::optional<QString> FixedKeyLayout::character(quint32 keyCode) const
{
    const auto found = m_characters.constFind(keyCode);
    if (found == m_characters.constEnd())
        return std::nullopt;
    return *found;
}
