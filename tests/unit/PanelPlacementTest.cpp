// SPDX-License-Identifier: GPL-3.0-or-later
#include "PanelPlacement.h"

#include <gtest/gtest.h>

#include <ostream>

using PanelPlacement::Screen;

void PrintTo(const QPoint &point, std::ostream *out)
{
    *out << '(' << point.x() << ", " << point.y() << ')';
}

namespace {

Screen whole(const QRect &geometry)
{
    return { geometry, geometry };
}

const Screen laptop = whole({ 0, 0, 1920, 1080 });
// To the right of the laptop, shorter.
const Screen rightMonitor = whole({ 1920, 0, 1280, 1024 });
// To the left and above the laptop's top edge.
const Screen leftMonitor = whole({ -1280, -200, 1280, 1024 });

TEST(PanelPlacementTest, OpensBesideThePointerInsideTheWorkArea)
{
    const struct {
        const char *name;
        QPoint pointer;
        QList<Screen> screens;
        qsizetype primary;
        QPoint expected;
    } cases[] = {
        { "middle of a large screen", { 500, 300 }, { laptop }, 0, { 508, 304 } },
        { "just room below", { 500, 596 }, { laptop }, 0, { 508, 600 } },
        { "one pixel short below: above, bottom 8 px over the pointer", { 500, 597 }, { laptop }, 0, { 508, 109 } },
        { "near the right edge: 8 px inside", { 1800, 300 }, { laptop }, 0, { 1552, 304 } },
        { "bottom-right corner", { 1919, 1079 }, { laptop }, 0, { 1552, 591 } },
        { "top-left corner", { 0, 0 }, { laptop }, 0, { 8, 4 } },
        // Above does not fit either: pushed down to the top margin, over the
        // pointer.
        { "too low both ways", { 500, 475 }, { whole({ 0, 0, 1440, 875 }) }, 0, { 508, 8 } },
        { "screen smaller than the panel: left and bottom margins win", { 100, 100 }, { whole({ 0, 0, 300, 400 }) }, 0,
            { 8, -88 } },
        { "a top bar of 30 px", { 500, 10 }, { { { 0, 0, 1920, 1080 }, { 0, 30, 1920, 1050 } } }, 0, { 508, 38 } },
        { "a dock of 48 px at the bottom", { 500, 560 }, { { { 0, 0, 1920, 1080 }, { 0, 0, 1920, 1032 } } }, 0,
            { 508, 72 } },
        { "second monitor, to the right", { 3150, 500 }, { laptop, rightMonitor }, 0, { 2832, 504 } },
        { "left edge belongs to the monitor it starts", { 1920, 100 }, { laptop, rightMonitor }, 0, { 1928, 104 } },
        { "monitor with negative coordinates", { -10, 700 }, { laptop, leftMonitor }, 0, { -368, 212 } },
        { "on no screen: the primary", { 5000, 5000 }, { laptop, rightMonitor }, 1, { 2832, 536 } },
        { "below the shorter monitor: the primary", { 2000, 1050 }, { laptop, rightMonitor }, 0, { 1552, 562 } },
    };
    for (const auto &c : cases)
        EXPECT_EQ(PanelPlacement::topLeft(c.pointer, c.screens, c.primary), c.expected) << c.name;
}

} // namespace
