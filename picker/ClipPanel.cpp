// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipPanel.h"

#include "PanelPlacement.h"

#include <QBitmap>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace {

constexpr qreal cornerRadius = 14;
// The ultra-thin look: most of what lies behind shows through.
constexpr int translucentAlpha = 200;
constexpr int borderAlpha = 60;

} // namespace

ClipPanel::ClipPanel(QWidget *rootView, bool unmanaged, QWidget *parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
{
    // A window manager takes a window in anew at each mapping, which under
    // openbox delays the first drawing by 10-20 ms. An unmanaged window
    // (override-redirect, as launchers are) has no frame and no taskbar
    // entry, and comes above the others by itself.
    if (unmanaged)
        setWindowFlag(Qt::BypassWindowManagerHint);
    // Chosen before the native window exists: it asks for a visual with
    // alpha, which a compositor needs to show anything translucent.
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedSize(PanelPlacement::panelSize);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(rootView);
    updateMask();
}

void ClipPanel::setTranslucent(bool translucent)
{
    if (translucent == m_translucent)
        return;
    m_translucent = translucent;
    updateMask();
    update();
}

void ClipPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        hide();
        Q_EMIT dismissed();
        return;
    }
    QWidget::keyPressEvent(event);
}

void ClipPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QColor background = palette().color(QPalette::Window);
    QColor border = palette().color(QPalette::WindowText);
    border.setAlpha(borderAlpha);
    painter.setPen(border);
    if (m_translucent) {
        background.setAlpha(translucentAlpha);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(background);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    } else {
        // Without a compositor, partly transparent pixels show dark: paint
        // everything opaque and leave the corners to the mask.
        painter.fillRect(rect(), background);
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), cornerRadius, cornerRadius);
    }
}

void ClipPanel::updateMask()
{
    if (m_translucent) {
        clearMask();
        return;
    }
    QBitmap shape(size());
    shape.fill(Qt::color0);
    QPainter painter(&shape);
    painter.setPen(Qt::color1);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), cornerRadius, cornerRadius);
    painter.end();
    setMask(shape);
}
