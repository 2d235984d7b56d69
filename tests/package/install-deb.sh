#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the .deb, installs it with apt as a user would, checks where its
# files land and that the installed zettly records a copy under Xvfb, then
# purges the package and checks that nothing of it is left, the autostart
# entry (a conffile, which a plain removal keeps) included.
#
#   install-deb.sh <build folder> <with-xvfb.sh>
#
# Exit status 77 (skipped) without root or password-less sudo: installing a
# package changes the machine.
set -euo pipefail
build=$1
withXvfb=$2

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo -n true 2>/dev/null || { echo "needs root or password-less sudo: skipped"; exit 77; }
    sudo="sudo -n"
fi
if dpkg-query -W -f='${Status}' zettly 2>/dev/null | grep -q 'install ok installed'; then
    echo "a zettly package is already installed here: skipped, to leave it alone"
    exit 77
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/zettly-deb.XXXXXX")
cleanup() {
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get purge -y -qq zettly >/dev/null 2>&1 || true
    rm -rf "$work"
}
trap cleanup EXIT

(cd "$build" && cpack -G DEB -B "$work" >"$work/cpack.log") || { cat "$work/cpack.log"; exit 1; }
deb=$(ls "$work"/zettly_*.deb)
echo "built ${deb##*/}"
dpkg-deb --field "$deb" Depends

$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$deb" >"$work/apt.log" 2>&1 \
    || { cat "$work/apt.log"; exit 1; }

installed=(/usr/bin/zettly /usr/libexec/zettly/zettly-update-check
    /usr/share/applications/com.marovelin.zettly.desktop
    /etc/xdg/autostart/com.marovelin.zettly.desktop
    /usr/share/icons/hicolor/scalable/apps/com.marovelin.zettly.svg)
for file in "${installed[@]}"; do
    [ -e "$file" ] || { echo "missing after install: $file"; exit 1; }
done
for entry in /usr/share/applications/com.marovelin.zettly.desktop /etc/xdg/autostart/com.marovelin.zettly.desktop; do
    grep -qx 'TryExec=/usr/bin/zettly' "$entry" || { echo "no TryExec=/usr/bin/zettly in $entry"; exit 1; }
    desktop-file-validate "$entry"
done

# The installed program, on a home of its own, records what xclip copies.
mkdir -p "$work/home/data" "$work/home/config" "$work/home/runtime"
chmod 700 "$work/home/runtime"
export XDG_DATA_HOME="$work/home/data" XDG_CONFIG_HOME="$work/home/config" XDG_RUNTIME_DIR="$work/home/runtime"
"$withXvfb" -- bash -c '
    /usr/bin/zettly & app=$!
    # Ended before its X server is: one that goes first can hang it on its way out.
    trap "kill $app 2>/dev/null; wait $app" EXIT
    for attempt in $(seq 1 50); do
        echo -n "installé $attempt" | xclip -selection clipboard -i
        sleep 0.2
        if grep -q "installé" "$XDG_DATA_HOME/Zettly/clips.json" 2>/dev/null; then
            echo "the installed zettly recorded a copy"
            exit 0
        fi
    done
    echo "the installed zettly recorded nothing"
    exit 1
'

$sudo env DEBIAN_FRONTEND=noninteractive apt-get purge -y -qq zettly >"$work/apt.log" 2>&1 \
    || { cat "$work/apt.log"; exit 1; }
for file in "${installed[@]}"; do
    [ ! -e "$file" ] || { echo "left after purge: $file"; exit 1; }
done
echo "purged, nothing left"
