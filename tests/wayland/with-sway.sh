#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a command inside a headless sway of its own (XWayland included), and
# stops the compositor after.
#
#   with-sway.sh [--] command [argument...]
#
# sway refuses to run as root: under root, sway runs as nobody, with a
# runtime folder of its own, and the command stays the caller's (it reaches
# the compositor through the socket's full path), so the build folder need
# not be readable by nobody; XWayland lets the caller in by its user name.
# The command sees WAYLAND_DISPLAY, DISPLAY and
# ZETTLY_SWAY_SESSION. Exit status: the command's, or 77 (skipped) when sway
# cannot start here.
set -uo pipefail

[ "${1:-}" != -- ] || shift
[ $# -gt 0 ] || { echo "usage: ${0##*/} command [argument...]" >&2; exit 2; }

skip() {
    echo "SKIPPED: $*" >&2
    exit 77
}
command -v sway >/dev/null || skip "sway is not installed (scripts/install-deps.sh installs it)"
command -v Xwayland >/dev/null || skip "Xwayland is not installed (scripts/install-deps.sh installs it)"

runtime=$(mktemp -d "${TMPDIR:-/tmp}/zettly-sway.XXXXXX") || exit 125
asUser=()
if [ "$(id -u)" -eq 0 ]; then
    chown nobody:nogroup "$runtime" || skip "cannot hand a runtime folder to nobody"
    asUser=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
fi
chmod 700 "$runtime"
clientRuntime=$(mktemp -d "${TMPDIR:-/tmp}/zettly-sway-client.XXXXXX") || exit 125
chmod 700 "$clientRuntime"
swayPid=
cleanup() {
    [ -z "$swayPid" ] || kill "$swayPid" 2>/dev/null
    wait 2>/dev/null
    rm -rf "$runtime" "$clientRuntime"
}
trap cleanup EXIT
trap 'exit 143' TERM INT HUP

cat >"$runtime/sway.conf" <<CONFIG
output HEADLESS-1 resolution 1280x800
xwayland enable
exec sh -c 'xhost +si:localuser:$(id -un) >/dev/null 2>&1; env > $runtime/session.env.part && mv $runtime/session.env.part $runtime/session.env'
CONFIG
chmod 644 "$runtime/sway.conf"

"${asUser[@]}" env -i PATH="$PATH" HOME="$runtime" XDG_RUNTIME_DIR="$runtime" \
    WLR_BACKENDS=headless WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman \
    sway -c "$runtime/sway.conf" >"$runtime/sway.log" 2>&1 &
swayPid=$!

# The session's environment, written by sway's first command.
for _ in $(seq 200); do
    [ -f "$runtime/session.env" ] && break
    kill -0 "$swayPid" 2>/dev/null || break
    sleep 0.05
done
if [ ! -f "$runtime/session.env" ]; then
    tail -n 5 "$runtime/sway.log" >&2
    skip "headless sway did not start here"
fi
session() { sed -n "s/^$1=//p" "$runtime/session.env"; }

env -i PATH="$PATH" HOME="$clientRuntime" XDG_RUNTIME_DIR="$clientRuntime" LANG=C.UTF-8 \
    WAYLAND_DISPLAY="$runtime/$(session WAYLAND_DISPLAY)" DISPLAY="$(session DISPLAY)" SWAYSOCK="$(session SWAYSOCK)" \
    ZETTLY_SWAY_SESSION=1 "$@"
