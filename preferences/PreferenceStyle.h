// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QIcon>

class QLabel;
class QString;

// The few looks the preference tabs share: dimmed and small texts, and icons
// from the user's theme.
namespace PreferenceStyle {

enum class TextSize { Body, Caption, SmallCaption };

// Dims the label's text, as secondary information, at the given size.
void makeSecondary(QLabel *label, TextSize size = TextSize::Body);
// Smaller than the body text, keeping the colour.
void setTextSize(QLabel *label, TextSize size);
void setTextColor(QLabel *label, const QColor &color);

// A freedesktop icon from the user's theme, or its symbolic variant.
QIcon themeIcon(const QString &name);
// The icon painted in one colour, as symbolic icons are meant to be shown.
QPixmap tintedPixmap(const QString &name, int size, const QColor &color);

// Colours of a state: granted, needs attention, destructive or recording.
inline const QColor green { 0x2e, 0xa0, 0x43 };
inline const QColor orange { 0xe6, 0x6c, 0x00 };
inline const QColor red { 0xc0, 0x1c, 0x28 };

} // namespace PreferenceStyle
