#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Runs a command against a private X server and stops that server afterwards.
#
#   with-xvfb.sh [--wm] [--] command [argument...]
#
#   --wm   also start openbox and wait until it manages the screen
#
# Xvfb picks a free display number itself (-displayfd), so runs in parallel
# never share or fight over a display. The command sees it in $DISPLAY and in
# $ZETTLY_XVFB_DISPLAY (for tests that must not run on a desktop's display).
# Exit status: the command's, or 125 when the server or window manager could
# not be started or the server died. Everything started here is stopped on
# exit, and gets SIGTERM should this script itself be killed outright.
#
# Environment:
#   ZETTLY_XVFB_TIMEOUT  seconds to wait for Xvfb and for openbox (default 15)
#   ZETTLY_XVFB_SCREEN   screen geometry (default 1280x800x24)
set -uo pipefail

readonly setupFailed=125
readonly timeout=${ZETTLY_XVFB_TIMEOUT:-15}
readonly screen=${ZETTLY_XVFB_SCREEN:-1280x800x24}

usage() {
    echo "usage: ${0##*/} [--wm] [--] command [argument...]" >&2
    exit 2
}

withWm=false
while [ $# -gt 0 ]; do
    case $1 in
        --wm) withWm=true; shift ;;
        --) shift; break ;;
        -h|--help) usage ;;
        -*) echo "${0##*/}: unknown option $1" >&2; usage ;;
        *) break ;;
    esac
done
[ $# -gt 0 ] || usage

tools=(Xvfb)
! $withWm || tools+=(openbox xprop)
for tool in "${tools[@]}"; do
    if ! command -v "$tool" >/dev/null; then
        echo "${0##*/}: $tool is missing (run scripts/install-deps.sh)" >&2
        exit $setupFailed
    fi
done

# setpriv makes the kernel signal our children if this shell dies without
# running its EXIT trap (SIGKILL).
orphanGuard=()
if command -v setpriv >/dev/null && setpriv --pdeathsig TERM true 2>/dev/null; then
    orphanGuard=(setpriv --pdeathsig TERM --)
fi

xvfbPid=
wmPid=
commandPid=
workDir=

# True while the process exists and has not exited (a zombie child has).
isRunning() {
    local stat
    stat=$(cat "/proc/$1/stat" 2>/dev/null) || return 1
    [[ ${stat##*) } != Z* ]]
}

# shellcheck disable=SC2317 # reached through the EXIT trap
# Sends SIGTERM, waits up to two seconds, then SIGKILL.
stopProcess() {
    local pid=$1
    [ -n "$pid" ] || return 0
    kill -TERM "$pid" 2>/dev/null
    for _ in $(seq 20); do
        isRunning "$pid" || break
        sleep 0.1
    done
    kill -KILL "$pid" 2>/dev/null
    wait "$pid" 2>/dev/null
    return 0
}

# shellcheck disable=SC2317
cleanup() {
    # The command first, so that it never sees its server vanish under it.
    stopProcess "$commandPid"
    stopProcess "$wmPid"
    stopProcess "$xvfbPid"
    [ -z "$workDir" ] || rm -rf "$workDir"
}
trap cleanup EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# Prints the end of a log through its read descriptor.
showLog() {
    echo "--- $1 ---" >&2
    tail -n 20 <&"$2" >&2
}

workDir=$(mktemp -d "${TMPDIR:-/tmp}/zettly-xvfb.XXXXXX") || exit $setupFailed
mkfifo "$workDir/displayfd" || exit $setupFailed
# The logs stay readable through these descriptors once the directory is gone.
# shellcheck disable=SC2094
exec {xvfbLog}>"$workDir/xvfb.log" {xvfbLogReader}<"$workDir/xvfb.log" \
    {wmLog}>"$workDir/wm.log" {wmLogReader}<"$workDir/wm.log" || exit $setupFailed

# Xvfb writes the display number to the pipe once it accepts connections, and
# the pipe reaches end-of-file at once should it exit before that. -noreset:
# the server must keep its state (keymap, selections) between clients.
"${orphanGuard[@]}" Xvfb -displayfd 3 -screen 0 "$screen" -nolisten tcp -noreset \
    3>"$workDir/displayfd" </dev/null >&"$xvfbLog" 2>&1 \
    {xvfbLog}>&- {xvfbLogReader}<&- {wmLog}>&- {wmLogReader}<&- &
xvfbPid=$!
exec {displayFd}<"$workDir/displayfd" {xvfbLog}>&-
# Both ends of the pipe are open: nothing on disk is needed any more, so a
# SIGKILL from here on leaves no files behind.
rm -rf "$workDir"
workDir=
displayNumber=
read -r -t "$timeout" -u "$displayFd" displayNumber
readStatus=$?
exec {displayFd}<&-
if ! [[ $displayNumber =~ ^[0-9]+$ ]]; then
    if [ $readStatus -gt 128 ]; then
        echo "${0##*/}: Xvfb did not start within ${timeout}s" >&2
    else
        echo "${0##*/}: Xvfb exited during start-up" >&2
    fi
    showLog "Xvfb output" "$xvfbLogReader"
    exit $setupFailed
fi

export DISPLAY=":$displayNumber"
# Tests that change server state check this before touching $DISPLAY.
export ZETTLY_XVFB_DISPLAY=$DISPLAY
# Keep clients away from a Wayland session the caller may be running in.
unset WAYLAND_DISPLAY
export XDG_SESSION_TYPE=x11

if $withWm; then
    "${orphanGuard[@]}" openbox --sm-disable </dev/null >&"$wmLog" 2>&1 \
        {xvfbLogReader}<&- {wmLog}>&- {wmLogReader}<&- &
    wmPid=$!
    # An EWMH manager announces itself through this root property.
    deadline=$((SECONDS + ${timeout%.*}))
    until xprop -root -notype _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; do
        if ! isRunning "$wmPid"; then
            echo "${0##*/}: openbox exited during start-up" >&2
            showLog "openbox output" "$wmLogReader"
            exit $setupFailed
        fi
        if [ $SECONDS -ge $deadline ]; then
            echo "${0##*/}: openbox did not take the screen within ${timeout}s" >&2
            showLog "openbox output" "$wmLogReader"
            exit $setupFailed
        fi
        sleep 0.05
    done
fi
exec {wmLog}>&-

# Run in the background so that a signal reaches our trap (and the cleanup)
# while the command is still running; an explicit stdin keeps it from being
# replaced by /dev/null.
exec {stdinFd}<&0
"${orphanGuard[@]}" "$@" <&"$stdinFd" {stdinFd}<&- {xvfbLogReader}<&- {wmLogReader}<&- &
commandPid=$!
wait "$commandPid"
status=$?
commandPid=
exec {stdinFd}<&-

if ! isRunning "$xvfbPid"; then
    echo "${0##*/}: Xvfb died while the command ran" >&2
    showLog "Xvfb output" "$xvfbLogReader"
    [ $status -ne 0 ] || status=$setupFailed
fi
exit $status
