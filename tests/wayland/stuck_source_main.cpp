// SPDX-License-Identifier: GPL-3.0-or-later
// Takes the session's clipboard offering text, never answers, and holds on
// until its standard input closes: what measure-wayland.sh copies after.
#include "StuckSource.h"

#include <cstdio>

int main()
{
    StuckSource stuck;
    if (!stuck.takeClipboard(QStringLiteral("text/plain;charset=utf-8"))) {
        std::fputs("no wlr data-control here\n", stderr);
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF) { }
    return 0;
}
