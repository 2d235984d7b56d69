// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipRowDelegate.h"

#include "ClipboardStore.h"
#include "ClipListModel.h"
#include "ClipRowContent.h"
#include "PanelState.h"
#include "SymbolPainter.h"

#include <QDateTime>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QPixmapCache>
#include <QSet>

#include <optional>

namespace {

using SymbolPainter::withAlpha;

// Around each row: the list's side margin, half the gap between rows.
constexpr int listInset = 6;
constexpr int rowGap = 1;
// Inside the rounded rectangle.
constexpr int horizontalPadding = 8;
constexpr int spacing = 10;
constexpr int leadingSlot = 38;
constexpr int thumbnailRadius = 6;
constexpr int badgeSize = 32;
constexpr int badgeRadius = 8;
constexpr int badgeSymbol = 17;
constexpr int missingImageSymbol = 22;
constexpr int fileIconSize = 32;
constexpr int rowRadius = 8;
constexpr int previewPixels = 13;
constexpr int captionPixels = 11;
constexpr int captionSpacing = 6;
constexpr int pinSymbol = 12;

const QColor pinOrange(0xff, 0x78, 0x00);

QFont withPixelSize(QFont font, int pixels)
{
    font.setPixelSize(pixels);
    return font;
}

// Decoding a large picture takes long, and rows repaint at every hover and
// scroll: the small rounded result is kept in QPixmapCache, keyed by the
// file's path and modification time, so that a replaced file shows anew.
std::optional<QPixmap> thumbnail(const QString &path, qreal devicePixelRatio)
{
    const QFileInfo file(path);
    if (path.isEmpty() || !file.exists())
        return std::nullopt;
    const QString key = QStringLiteral("thumbnail:%1:%2:%3")
                            .arg(path)
                            .arg(file.lastModified().toMSecsSinceEpoch())
                            .arg(devicePixelRatio);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    // A file that failed once fails again: not decoded at every repaint.
    static QSet<QString> unreadable;
    if (unreadable.contains(key))
        return std::nullopt;

    QImageReader reader(path);
    const int side = qRound(leadingSlot * devicePixelRatio);
    if (const QSize size = reader.size(); size.isValid()) {
        // Fills the square; the overflow is cut evenly from both sides.
        const QSize filled = size.scaled(side, side, Qt::KeepAspectRatioByExpanding);
        reader.setScaledSize(filled);
        reader.setScaledClipRect(QRect((filled.width() - side) / 2, (filled.height() - side) / 2, side, side));
    }
    QImage image = reader.read();
    if (image.isNull()) {
        unreadable.insert(key);
        return std::nullopt;
    }
    if (image.size() != QSize(side, side))
        image
            = image.scaled(side, side, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation).copy(0, 0, side, side);

    pixmap = QPixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath rounded;
    rounded.addRoundedRect(
        QRectF(0, 0, side, side), thumbnailRadius * devicePixelRatio, thumbnailRadius * devicePixelRatio);
    painter.setClipPath(rounded);
    painter.drawImage(0, 0, image);
    painter.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

QRect centred(const QRect &slot, int side)
{
    return QRect(slot.x() + (slot.width() - side) / 2, slot.y() + (slot.height() - side) / 2, side, side);
}

// Shaping a 200-character preview to cut it at a few dozen is wasted work:
// no glyph is narrower than about 2 pixels.
QString elided(const QString &text, const QFontMetrics &metrics, int width)
{
    const qsizetype enough = std::max(8, width / 2);
    if (text.size() <= enough)
        return metrics.elidedText(text, Qt::ElideRight, width);
    return metrics.elidedText(text.left(enough) + QChar(0x2026), Qt::ElideRight, width);
}

} // namespace

ClipRowDelegate::ClipRowDelegate(const ClipboardStore &store, const PanelState &state, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_store(store)
    , m_state(state)
{
}

QSize ClipRowDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    return { option.rect.width(), rowHeight };
}

void ClipRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const ClipItem item = index.data(ClipListModel::ItemRole).value<ClipItem>();
    const bool selected = index.row() == m_state.selection();
    const bool hovered = option.state.testFlag(QStyle::State_MouseOver);
    const QPalette &palette = option.palette;
    const QColor text = palette.color(QPalette::Text);
    const QColor white(Qt::white);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect.adjusted(listInset, rowGap, -listInset, -rowGap);
    if (selected || hovered) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(selected ? withAlpha(palette.color(QPalette::Highlight), 0.9) : withAlpha(text, 0.06));
        painter->drawRoundedRect(QRectF(row), rowRadius, rowRadius);
    }

    const QRect content = row.adjusted(horizontalPadding, 0, -horizontalPadding, 0);
    const QRect leading(content.x(), content.y() + (content.height() - leadingSlot) / 2, leadingSlot, leadingSlot);
    paintLeading(painter, leading, item, selected, palette);

    int right = content.right();
    if (item.pinned) {
        const QRect pin(right - pinSymbol + 1, content.y() + (content.height() - pinSymbol) / 2, pinSymbol, pinSymbol);
        painter->drawPixmap(pin,
            SymbolPainter::tinted(QStringLiteral("view-pin-symbolic"), pinSymbol, selected ? white : pinOrange,
                painter->device()->devicePixelRatio()));
        right = pin.left() - spacing;
    }

    const int left = leading.right() + 1 + spacing;
    const int width = right - left + 1;
    const QFont previewFont = withPixelSize(option.font, previewPixels);
    const QFont captionFont = withPixelSize(option.font, captionPixels);
    const QFontMetrics previewMetrics(previewFont);
    const QFontMetrics captionMetrics(captionFont);
    const int blockHeight = previewMetrics.height() + 1 + captionMetrics.height();
    const int top = content.y() + (content.height() - blockHeight) / 2;

    painter->setFont(previewFont);
    painter->setPen(selected ? white : text);
    const QRect previewRect(left, top, width, previewMetrics.height());
    painter->drawText(previewRect, Qt::AlignLeft | Qt::AlignVCenter,
        elided(index.data(Qt::DisplayRole).toString(), previewMetrics, width));

    painter->setFont(captionFont);
    QRect caption(left, previewRect.bottom() + 2, width, captionMetrics.height());
    const QColor secondary = SymbolPainter::secondary(palette);
    if (const QString subtitle = ClipRowContent::subtitle(item); !subtitle.isEmpty()) {
        QColor tint = ClipRowContent::symbol(item).tint;
        if (!tint.isValid())
            tint = secondary;
        painter->setPen(selected ? withAlpha(white, 0.85) : withAlpha(tint, 0.9));
        const QString shown = captionMetrics.elidedText(subtitle, Qt::ElideRight, caption.width());
        painter->drawText(caption, Qt::AlignLeft | Qt::AlignVCenter, shown);
        caption.setLeft(caption.left() + captionMetrics.horizontalAdvance(shown) + captionSpacing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(selected ? withAlpha(white, 0.5) : withAlpha(secondary, 0.4));
        painter->drawEllipse(QRectF(caption.left(), caption.center().y(), 2, 2));
        caption.setLeft(caption.left() + 2 + captionSpacing);
    }
    painter->setPen(selected ? withAlpha(white, 0.8) : withAlpha(secondary, 0.7));
    painter->drawText(caption, Qt::AlignLeft | Qt::AlignVCenter,
        captionMetrics.elidedText(index.data(ClipListModel::AgeRole).toString(), Qt::ElideRight, caption.width()));
    painter->restore();
}

void ClipRowDelegate::paintLeading(
    QPainter *painter, const QRect &slot, const ClipItem &item, bool selected, const QPalette &palette) const
{
    const qreal ratio = painter->device()->devicePixelRatio();
    const ClipRowContent::Symbol symbol = ClipRowContent::symbol(item);
    const QColor tint = symbol.tint.isValid() ? symbol.tint : SymbolPainter::secondary(palette);

    if (item.kind == ClipKind::Image && item.imageRelPath) {
        if (const std::optional<QPixmap> picture = thumbnail(m_store.imagePath(item), ratio)) {
            painter->drawPixmap(slot, *picture);
            return;
        }
        // The picture is gone or unreadable: its symbol alone, no badge.
        painter->drawPixmap(
            centred(slot, missingImageSymbol), SymbolPainter::tinted(symbol.iconName, missingImageSymbol, tint, ratio));
        return;
    }
    if (const std::optional<QString> path = ClipRowContent::existingFirstPath(item)) {
        for (const QString &name : ClipRowContent::fileIconNames(*path)) {
            const QIcon icon = SymbolPainter::themeIcon(name);
            if (!icon.isNull()) {
                icon.paint(painter, centred(slot, fileIconSize));
                return;
            }
        }
    }
    const QRect badge = centred(slot, badgeSize);
    if (!selected) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(SymbolPainter::withAlpha(tint, 0.16));
        painter->drawRoundedRect(QRectF(badge), badgeRadius, badgeRadius);
    }
    painter->drawPixmap(centred(badge, badgeSymbol),
        SymbolPainter::tinted(symbol.iconName, badgeSymbol, selected ? QColor(Qt::white) : tint, ratio));
}
