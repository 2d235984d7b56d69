// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyLayout.h"

#include <QHash>

// A keyboard layout given as a table, for tests and machines without a display.
class FixedKeyLayout : public KeyLayout {
public:
    FixedKeyLayout() = default;
    explicit FixedKeyLayout(QHash<quint32, QString> characters);

    void setCharacter(quint32 keyCode, const QString &character);
    std::optional<QString> character(quint32 keyCode) const override;

private:
    QHash<quint32, QString> m_characters;
};
