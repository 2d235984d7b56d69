// SPDX-License-Identifier: GPL-3.0-or-later
#include "PanelPlacement.h"

namespace PanelPlacement {

namespace {

constexpr int pointerGapRight = 8;
constexpr int pointerGapBelow = 4;
constexpr int pointerGapAbove = 8;
constexpr int edgeMargin = 8;

QRect workAreaUnder(QPoint pointer, const QList<Screen> &screens, qsizetype primaryIndex)
{
    for (const Screen &screen : screens) {
        if (screen.geometry.contains(pointer))
            return screen.availableGeometry;
    }
    if (primaryIndex >= 0 && primaryIndex < screens.size())
        return screens.at(primaryIndex).availableGeometry;
    return screens.isEmpty() ? QRect() : screens.first().availableGeometry;
}

} // namespace

QPoint topLeft(QPoint pointer, const QList<Screen> &screens, qsizetype primaryIndex)
{
    const QRect work = workAreaUnder(pointer, screens, primaryIndex);
    const int width = panelSize.width();
    const int height = panelSize.height();
    // QRect's right() and bottom() are the last pixel inside; the edges
    // here are one past it.
    const int left = work.x();
    const int top = work.y();
    const int right = work.x() + work.width();
    const int bottom = work.y() + work.height();

    int x = pointer.x() + pointerGapRight;
    int y = pointer.y() + pointerGapBelow;
    if (y + height > bottom)
        y = pointer.y() - pointerGapAbove - height;

    // In this order, so that on a screen too small for the panel the left
    // and bottom margins win.
    if (right < x + width)
        x = right - width - edgeMargin;
    if (x < left)
        x = left + edgeMargin;
    if (y < top)
        y = top + edgeMargin;
    if (y + height > bottom)
        y = bottom - height - edgeMargin;
    return { x, y };
}

} // namespace PanelPlacement
