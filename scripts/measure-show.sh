#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds, then measures how soon the picker panel is on the screen and drawn
# after the global shortcut, and what zettly holds in memory when idle, with a
# history of 2,000 entries: first with a window manager (what a user has),
# then on a bare X server. Each run gets an X server of its own. Reports
# figures, asserts none.
#
#   measure-show.sh [--no-build] [show_latency option...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="${ZETTLY_BUILD_DIR:-$root/build}"
if [ "${1:-}" = --no-build ]; then
    shift
else
    "$root/scripts/build.sh"
fi

tool="$build/bench/show_latency"
app="$build/app/zettly"
status=0
measure() {
    echo
    "$root/tests/x11/with-xvfb.sh" "$@" || status=1
}
measure --wm -- "$tool" --app "$app" --history 2000 "$@"
measure -- "$tool" --app "$app" --history 2000 "$@"
exit "$status"
