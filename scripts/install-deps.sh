#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the Debian 12 packages Zettly needs.
#
#   install-deps.sh [app|all]
#
#   app   building and running the app only (what scripts/run.sh needs)
#   all   also the tests, benchmarks, fuzzers and the packaging test (default)
#
# Safe to run again: packages already present are left as they are.
set -euo pipefail
group=${1:-all}

app_packages=(
    # build
    build-essential cmake ninja-build pkg-config libsimdjson-dev
    # toolkit and platform
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev qt6-image-formats-plugins qt6-qpa-plugins
    libgl-dev libx11-dev libx11-xcb-dev libxcb1-dev libxcb-xkb-dev libxcb-xtest0-dev libxcb-damage0-dev
    libxcb-xfixes0-dev libxcb-xinput-dev libxtst-dev libxkbcommon-dev libxkbcommon-x11-dev libicu-dev
    adwaita-icon-theme
    # Wayland (the wlr protocol files come with the Rust crate's package, KDE's with their own)
    libwayland-dev librust-wayland-protocols-dev plasma-wayland-protocols qt6-wayland
)
test_packages=(
    git
    # tests, benchmarks, fuzzing (clang for libFuzzer; g++ comes with build-essential)
    libgtest-dev libgmock-dev libbenchmark-dev clang libclang-rt-14-dev
    # the update tests make a certificate for their local https server
    openssl
    # real-X tests
    xvfb xauth x11-xkb-utils xkb-data openbox xdotool xclip x11-utils x11-xserver-utils trayer lxterminal
    # Wayland tests: a headless sway with XWayland, and native clients
    sway xwayland wl-clipboard foot wtype
    # the accessibility bus, read as a screen reader does
    python3-pyatspi at-spi2-core dbus-x11
    # the portal test's private session bus (dbus-run-session)
    dbus-daemon
    # packaging test
    desktop-file-utils
)

case $group in
app) packages=("${app_packages[@]}") ;;
all) packages=("${app_packages[@]}" "${test_packages[@]}") ;;
*)
    echo "usage: ${0##*/} [app|all]" >&2
    exit 2
    ;;
esac

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
