// SPDX-License-Identifier: GPL-3.0-or-later
#include "FooterHint.h"

#include "SymbolPainter.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

namespace {

constexpr int captionPixels = 11;
constexpr int chipRadius = 3;

} // namespace

FooterHint::FooterHint(const QString &key, const QString &label, QWidget *parent)
    : QWidget(parent)
    , m_key(new QLabel(key, this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(3);

    QFont keyFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    keyFont.setPixelSize(captionPixels);
    m_key->setFont(keyFont);
    m_key->setContentsMargins(4, 1, 4, 1);
    layout->addWidget(m_key);

    auto *text = new QLabel(label, this);
    QFont textFont = font();
    textFont.setPixelSize(captionPixels);
    text->setFont(textFont);
    QPalette secondary = text->palette();
    secondary.setColor(QPalette::WindowText, SymbolPainter::secondary(palette()));
    text->setPalette(secondary);
    layout->addWidget(text);
}

void FooterHint::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(SymbolPainter::withAlpha(palette().color(QPalette::Text), 0.1));
    painter.drawRoundedRect(QRectF(m_key->geometry()), chipRadius, chipRadius);
}
