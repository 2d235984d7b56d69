// SPDX-License-Identifier: GPL-3.0-or-later
#include "SymbolPainter.h"

#include <QPainter>
#include <QPalette>
#include <QPixmapCache>

namespace SymbolPainter {

QIcon themeIcon(const QString &name)
{
    // A desktop without an icon theme of its own gets Qt's "hicolor", which
    // has none of the symbols.
    if (QIcon::fallbackThemeName().isEmpty() || QIcon::fallbackThemeName() == QLatin1String("hicolor"))
        QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
    return QIcon::fromTheme(name);
}

QPixmap tinted(const QString &iconName, int size, const QColor &color, qreal devicePixelRatio)
{
    const QString key
        = QStringLiteral("symbol:%1:%2:%3:%4").arg(iconName).arg(size).arg(color.rgba(), 0, 16).arg(devicePixelRatio);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = QPixmap(QSize(size, size) * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    themeIcon(iconName).paint(&painter, QRect(0, 0, size, size));
    // Keeps the icon's shape and coverage, takes the colour.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRect(0, 0, size, size), color);
    painter.end();
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

QIcon tintedIcon(const QString &iconName, int size, const QColor &color)
{
    return QIcon(tinted(iconName, size, color, 2.0));
}

QColor secondary(const QPalette &palette)
{
    return withAlpha(palette.color(QPalette::Text), 0.6);
}

QColor tertiary(const QPalette &palette)
{
    return withAlpha(palette.color(QPalette::Text), 0.35);
}

QColor withAlpha(QColor color, qreal alpha)
{
    color.setAlphaF(float(color.alphaF() * alpha));
    return color;
}

} // namespace SymbolPainter
