#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a command against an X server of its own, and stops the server after.
#
#   with-xvfb.sh [--wm] [--] command [argument...]
#
#   --wm   also start openbox and wait until it manages the screen
#
# The command sees the server in $DISPLAY and in $ZETTLY_XVFB_DISPLAY (tests
# that change the keyboard layout refuse any other display). Exit status: the
# command's, or 125 when the server or the window manager did not start.
set -uo pipefail

withWm=false
if [ "${1:-}" = --wm ]; then
    withWm=true
    shift
fi
[ "${1:-}" != -- ] || shift
[ $# -gt 0 ] || { echo "usage: ${0##*/} [--wm] command [argument...]" >&2; exit 2; }

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

if $withWm; then
    # openbox runs its startup command once it manages the screen: a window
    # mapped before that counts as already there, and is not focused.
    "${guard[@]}" openbox --sm-disable --startup "touch $work/wm.ready" </dev/null >"$work/wm.log" 2>&1 &
    pids+=($!)
    for ((tries = 0; ; tries++)); do
        [ -e "$work/wm.ready" ] && break
        if ((tries == 300)); then
            echo "${0##*/}: openbox did not start" >&2
            cat "$work/wm.log" >&2
            exit 125
        fi
        sleep 0.05
    done
fi

# In the background, so that a signal reaches the trap while it runs.
"${guard[@]}" "$@" &
pids+=($!)
wait "${pids[-1]}"
