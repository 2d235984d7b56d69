// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

class QPalette;

// Icons of the user's theme drawn in one colour, as symbols are meant to be,
// and the picker's named shades.
namespace SymbolPainter {

// The icon named, from the theme or, failing that, from Adwaita's.
QIcon themeIcon(const QString &name);
// The icon in one colour at size × size logical pixels; kept in
// QPixmapCache, since rows repaint often and rendering SVG is not cheap.
QPixmap tinted(const QString &iconName, int size, const QColor &color, qreal devicePixelRatio);
// A ready icon in one colour, for menus and buttons.
QIcon tintedIcon(const QString &iconName, int size, const QColor &color);
// Secondary and tertiary text: the text colour, faded.
QColor secondary(const QPalette &palette);
QColor tertiary(const QPalette &palette);
QColor withAlpha(QColor color, qreal alpha);

} // namespace SymbolPainter
