#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a command on a D-Bus session of its own with the accessibility bus up,
# as a screen reader finds it, and Qt programs exposing their widgets there.
#
#   with-accessibility.sh [--] command [argument...]
#
# Use it inside with-xvfb.sh. Exit status: the command's, or 125 when the
# accessibility bus did not come up.
set -uo pipefail
[ "${1:-}" != -- ] || shift
[ $# -gt 0 ] || { echo "usage: ${0##*/} [--] command [argument...]" >&2; exit 2; }

# First pass: start the private session bus and come back inside it.
if [ -z "${ZETTLY_ACCESSIBILITY_SESSION:-}" ]; then
    ZETTLY_ACCESSIBILITY_SESSION=1 exec dbus-run-session -- "$0" -- "$@"
fi
unset ZETTLY_ACCESSIBILITY_SESSION

launcher=/usr/libexec/at-spi-bus-launcher
[ -x "$launcher" ] || { echo "${0##*/}: $launcher missing (package at-spi2-core)" >&2; exit 125; }
pids=()
cleanup() {
    for ((i = ${#pids[@]} - 1; i >= 0; i--)); do kill "${pids[i]}" 2>/dev/null; done
    wait 2>/dev/null
}
trap cleanup EXIT
trap 'exit 143' TERM INT HUP

setpriv --pdeathsig TERM -- "$launcher" --launch-immediately </dev/null >/dev/null 2>&1 &
pids+=($!)
# The launcher answers on the session bus with the accessibility bus's address
# once that bus runs.
for ((tries = 0; ; tries++)); do
    address=$(dbus-send --session --print-reply=literal --dest=org.a11y.Bus /org/a11y/bus \
        org.a11y.Bus.GetAddress 2>/dev/null) && [ -n "${address// /}" ] && break
    if ((tries == 200)); then
        echo "${0##*/}: the accessibility bus did not come up" >&2
        exit 125
    fi
    sleep 0.05
done

export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 QT_ACCESSIBILITY=1 GTK_MODULES=gail:atk-bridge
setpriv --pdeathsig TERM -- "$@" &
pids+=($!)
wait "${pids[-1]}"
