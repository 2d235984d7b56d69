// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

class ClipboardStore;
class PanelState;
struct ClipItem;

// Paints one entry of the picker's list: its leading visual (thumbnail, file
// icon or tinted badge), the preview on one line, the subtitle and age
// below, the pin mark; the selected row on the highlight colour, the row
// under the pointer with a faint overlay. Every row has the same height, so
// the list never measures more than one.
class ClipRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    static constexpr int rowHeight = 52;

    ClipRowDelegate(const ClipboardStore &store, const PanelState &state, QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    void paintLeading(
        QPainter *painter, const QRect &slot, const ClipItem &item, bool selected, const QPalette &palette) const;

    const ClipboardStore &m_store;
    const PanelState &m_state;
};
