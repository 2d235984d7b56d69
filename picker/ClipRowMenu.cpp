// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipRowMenu.h"

#include "ClipItem.h"
#include "SymbolPainter.h"

#include <QPainter>

namespace {

constexpr int iconSize = 16;
const QColor destructiveRed(0xe0, 0x1b, 0x24);

// No theme has a crossed-out pin: the pin with a stroke across it.
QIcon unpinIcon(const QColor &color)
{
    QPixmap pixmap = SymbolPainter::tinted(QStringLiteral("view-pin-symbolic"), iconSize, color, 2.0);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(2, 2), QPointF(iconSize - 2, iconSize - 2));
    painter.end();
    return QIcon(pixmap);
}

} // namespace

ClipRowMenu::ClipRowMenu(const ClipItem &item, QWidget *parent)
    : QMenu(parent)
{
    const QColor iconColor = palette().color(QPalette::Text);
    addChoice(SymbolPainter::tintedIcon(QStringLiteral("edit-paste-symbolic"), iconSize, iconColor),
        QStringLiteral("Coller"), Choice::Paste);
    if (item.pinned)
        addChoice(unpinIcon(iconColor), QStringLiteral("Désépingler"), Choice::TogglePin);
    else
        addChoice(SymbolPainter::tintedIcon(QStringLiteral("view-pin-symbolic"), iconSize, iconColor),
            QStringLiteral("Épingler"), Choice::TogglePin);
    if (item.fullText) {
        addSeparator();
        addChoice(SymbolPainter::tintedIcon(QStringLiteral("edit-copy-symbolic"), iconSize, iconColor),
            QStringLiteral("Copier sans coller"), Choice::CopyOnly);
    }
    addSeparator();
    // Menus draw every item's text in one colour: the red icon marks it.
    addChoice(SymbolPainter::tintedIcon(QStringLiteral("edit-delete-symbolic"), iconSize, destructiveRed),
        QStringLiteral("Supprimer"), Choice::Delete);
}

void ClipRowMenu::addChoice(const QIcon &icon, const QString &text, Choice choice)
{
    QAction *action = addAction(icon, text);
    connect(action, &QAction::triggered, this, [this, choice] { Q_EMIT chosen(choice); });
}
