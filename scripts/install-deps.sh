#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the Debian 12 packages that building, running and testing Zettly need.
# Safe to run again: packages already present are left as they are.
set -euo pipefail

packages=(
    # build
    build-essential cmake ninja-build pkg-config git
    # toolkit and platform
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev qt6-image-formats-plugins qt6-qpa-plugins
    libgl-dev libx11-dev libx11-xcb-dev libxcb1-dev libxcb-xkb-dev libxcb-xtest0-dev libxcb-damage0-dev
    libxcb-xfixes0-dev libxcb-xinput-dev libxtst-dev libxkbcommon-dev libxkbcommon-x11-dev libicu-dev
    adwaita-icon-theme
    # the Wayland clipboard (the wlr data-control protocol file comes with the Rust crate's package)
    libwayland-dev librust-wayland-protocols-dev qt6-wayland
    # tests, benchmarks, fuzzing
    libgtest-dev libgmock-dev libbenchmark-dev clang libclang-rt-14-dev
    # real-X tests
    xvfb xauth x11-xkb-utils xkb-data openbox xdotool xclip x11-utils trayer
    # Wayland tests: a headless sway with XWayland, and native clients
    sway xwayland wl-clipboard foot wtype
    # the accessibility bus, read as a screen reader does
    python3-pyatspi at-spi2-core dbus-x11
    # packaging test
    desktop-file-utils
)

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
