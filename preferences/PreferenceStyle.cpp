// SPDX-License-Identifier: GPL-3.0-or-later
#include "PreferenceStyle.h"

#include <QLabel>
#include <QPainter>
#include <QPalette>

namespace PreferenceStyle {

void makeSecondary(QLabel *label, TextSize size)
{
    setTextSize(label, size);
    QPalette palette = label->palette();
    QColor dimmed = palette.color(QPalette::WindowText);
    dimmed.setAlphaF(0.6);
    palette.setColor(QPalette::WindowText, dimmed);
    label->setPalette(palette);
}

void setTextSize(QLabel *label, TextSize size)
{
    if (size == TextSize::Body)
        return;
    QFont font = label->font();
    const qreal factor = size == TextSize::Caption ? 0.85 : 0.75;
    font.setPointSizeF(font.pointSizeF() * factor);
    label->setFont(font);
}

void setTextColor(QLabel *label, const QColor &color)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, color);
    label->setPalette(palette);
}

QIcon themeIcon(const QString &name)
{
    // A theme may know a name only in its symbolic form; Qt then still
    // hands out an icon, empty.
    QIcon icon = QIcon::fromTheme(name);
    if (icon.availableSizes().isEmpty())
        icon = QIcon::fromTheme(name + QStringLiteral("-symbolic"));
    return icon;
}

QPixmap tintedPixmap(const QString &name, int size, const QColor &color)
{
    QPixmap pixmap = themeIcon(name).pixmap(size, size);
    if (pixmap.isNull())
        return pixmap;
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    return pixmap;
}

} // namespace PreferenceStyle
