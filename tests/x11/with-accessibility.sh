#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a command with an accessibility bus of its own, as a screen reader
# would find it: a private D-Bus session bus, the AT-SPI bus launcher on it,
# and Qt told to expose its widgets whatever the desktop says.
#
#   with-accessibility.sh [--] command [argument...]
#
# Needs $DISPLAY (run it inside with-xvfb.sh). Exit status: the command's, or
# 125 when the buses did not start.
set -uo pipefail

[ "${1:-}" != -- ] || shift
[ $# -gt 0 ] || { echo "usage: ${0##*/} [--] command [argument...]" >&2; exit 2; }

eval "$(dbus-launch --sh-syntax)" || exit 125
launcher=""
cleanup() {
    [ -z "$launcher" ] || kill "$launcher" 2>/dev/null
    kill "$DBUS_SESSION_BUS_PID" 2>/dev/null
}
trap cleanup EXIT
trap 'exit 143' TERM INT HUP

/usr/libexec/at-spi-bus-launcher --launch-immediately </dev/null >/dev/null 2>&1 &
launcher=$!
# The launcher owns org.a11y.Bus once the accessibility bus is up.
for ((tries = 0; ; tries++)); do
    dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress >/dev/null 2>&1 && break
    if ((tries == 200)); then
        echo "${0##*/}: the accessibility bus did not start" >&2
        exit 125
    fi
    sleep 0.05
done
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 NO_AT_BRIDGE=0

"$@" &
child=$!
wait "$child"
