#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a command against an X server of its own, and stops the server after.
#
#   with-xvfb.sh [--wm] [--accessibility] [--] command [argument...]
#
#   --wm             also start openbox and wait until it manages the screen
#   --accessibility  also start an accessibility bus of its own, as a screen
#                    reader finds it, and have Qt expose its widgets on it
#
# The command sees the server in $DISPLAY and in $ZETTLY_XVFB_DISPLAY (tests
# that change the keyboard layout refuse any other display). Exit status: the
# command's, or 125 when the server, the window manager or the bus did not
# start.
set -uo pipefail

withWm=false
withAccessibility=false
while :; do
    case "${1:-}" in
    --wm) withWm=true ;;
    --accessibility) withAccessibility=true ;;
    --) shift; break ;;
    *) break ;;
    esac
    shift
done
[ $# -gt 0 ] || { echo "usage: ${0##*/} [--wm] [--accessibility] command [argument...]" >&2; exit 2; }

work=$(mktemp -d "${TMPDIR:-/tmp}/zettly-xvfb.XXXXXX") || exit 125
pids=()
cleanup() {
    for ((i = ${#pids[@]} - 1; i >= 0; i--)); do kill "${pids[i]}" 2>/dev/null; done
    wait 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 143' TERM INT HUP

# Children get SIGTERM should this script be killed outright (a CTest timeout).
guard=(setpriv --pdeathsig TERM --)

# -displayfd: Xvfb picks a free display number itself, so tests in parallel
# never collide. -noreset: the keymap and the selections must survive the
# last client leaving.
mkfifo "$work/display"
exec {displayFd}<>"$work/display"
"${guard[@]}" Xvfb -displayfd "$displayFd" -screen 0 1280x800x24 -nolisten tcp -noreset \
    </dev/null >"$work/xvfb.log" 2>&1 &
pids+=($!)
if ! read -r -t 15 -u "$displayFd" number; then
    echo "${0##*/}: Xvfb did not start" >&2
    cat "$work/xvfb.log" >&2
    exit 125
fi
export DISPLAY=":$number" ZETTLY_XVFB_DISPLAY=":$number" XDG_SESSION_TYPE=x11
unset WAYLAND_DISPLAY

# Polls the command until it succeeds, for 15 s at most.
waitFor() {
    local what=$1 tries
    shift
    for ((tries = 0; tries < 300; tries++)); do
        "$@" && return 0
        sleep 0.05
    done
    echo "${0##*/}: $what did not start" >&2
    return 1
}

if $withWm; then
    # openbox runs its startup command once it manages the screen: a window
    # mapped before that counts as already there, and is not focused.
    "${guard[@]}" openbox --sm-disable --startup "touch $work/wm.ready" </dev/null >"$work/wm.log" 2>&1 &
    pids+=($!)
    waitFor openbox test -e "$work/wm.ready" || { cat "$work/wm.log" >&2; exit 125; }
fi

if $withAccessibility; then
    # A private session bus, and the AT-SPI bus launcher on it, which owns
    # org.a11y.Bus once the accessibility bus is up.
    eval "$(dbus-launch --sh-syntax)" || exit 125
    pids+=("$DBUS_SESSION_BUS_PID")
    "${guard[@]}" /usr/libexec/at-spi-bus-launcher --launch-immediately </dev/null >/dev/null 2>&1 &
    pids+=($!)
    busUp() { dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress >/dev/null 2>&1; }
    waitFor "the accessibility bus" busUp || exit 125
    export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 NO_AT_BRIDGE=0
fi

# In the background, so that a signal reaches the trap while it runs.
"${guard[@]}" "$@" &
pids+=($!)
wait "${pids[-1]}"
