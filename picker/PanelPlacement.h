// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

// Where the picker opens: beside the pointer, on the screen under it, kept
// inside that screen's work area. Coordinates are Qt's global ones, y growing
// downward.
namespace PanelPlacement {

inline constexpr QSize panelSize { 360, 480 };

struct Screen {
    // The whole screen.
    QRect geometry;
    // The screen minus panels and docks.
    QRect availableGeometry;
};

// The panel's top-left corner: 8 px right of and 4 px below the pointer, or
// with its bottom 8 px above the pointer when there is no room below, then
// pushed 8 px inside the work area's right, left, top and bottom edges, in
// that order. The screen is the first that contains the pointer, else the
// primary one.
QPoint topLeft(QPoint pointer, const QList<Screen> &screens, qsizetype primaryIndex);

} // namespace PanelPlacement
