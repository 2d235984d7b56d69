#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds, then measures how soon another program's copy reaches the history
# file and what a clipboard owner that never answers costs: in process (empty
# history, then 2,000 entries), then the real executable, then one 20 MiB text
# copied into the real executable (its delay and the app's peak memory). Each
# run gets an X server and a window manager of its own. Reports figures,
# asserts none.
#
#   measure-capture.sh [--no-build]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="${ZETTLY_BUILD_DIR:-$root/build}"
[ "${1:-}" = --no-build ] || "$root/scripts/build.sh"

tool="$build/bench/capture_latency"
app="$build/app/zettly"
status=0
measure() {
    echo
    "$root/tests/x11/with-xvfb.sh" --wm -- "$tool" "$@" || status=1
}
measure
measure --history 2000
measure --app "$app"
measure --app "$app" --history 2000
measure --app "$app" --big 20
exit "$status"
