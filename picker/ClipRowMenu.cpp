// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipRowMenu.h"

#include "ClipItem.h"
#include "SymbolPainter.h"

#include <QPainter>
#include <QProxyStyle>
#include <QStyleOptionMenuItem>

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

// Draws the destructive item's text in red; menus have no colour per item.
class DestructiveItemStyle : public QProxyStyle {
public:
    explicit DestructiveItemStyle(QString text)
        : m_text(std::move(text))
    {
    }

    void drawControl(
        ControlElement element, const QStyleOption *option, QPainter *painter, const QWidget *widget) const override
    {
        const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
        if (element != CE_MenuItem || !item || item->text != m_text || (item->state & State_Selected)) {
            QProxyStyle::drawControl(element, option, painter, widget);
            return;
        }
        QStyleOptionMenuItem red = *item;
        for (const QPalette::ColorRole role : { QPalette::Text, QPalette::WindowText, QPalette::ButtonText })
            red.palette.setColor(role, destructiveRed);
        QProxyStyle::drawControl(element, &red, painter, widget);
    }

private:
    QString m_text;
};

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
    const QString remove = QStringLiteral("Supprimer");
    addChoice(SymbolPainter::tintedIcon(QStringLiteral("edit-delete-symbolic"), iconSize, destructiveRed), remove,
        Choice::Delete);
    auto *style = new DestructiveItemStyle(remove);
    style->setParent(this);
    setStyle(style);
}

void ClipRowMenu::addChoice(const QIcon &icon, const QString &text, Choice choice)
{
    QAction *action = addAction(icon, text);
    connect(action, &QAction::triggered, this, [this, choice] { Q_EMIT chosen(choice); });
}
