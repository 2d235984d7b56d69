#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Configures and builds Zettly. Safe to run again: only what changed is rebuilt.
#
#   build.sh          build/: clang++, the app, tests, benchmarks and fuzzers
#   build.sh --gcc    build-gcc/: g++, the app, tests and benchmarks (libFuzzer
#                     needs clang)
#   build.sh --app    build-app/: the default compiler, the app alone
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

mode=${1:-}
case $mode in
"")
    build="${ZETTLY_BUILD_DIR:-$root/build}"
    options=(-DCMAKE_CXX_COMPILER=clang++)
    ;;
--gcc)
    build="${ZETTLY_GCC_BUILD_DIR:-$root/build-gcc}"
    options=(-DCMAKE_CXX_COMPILER=g++ -DZETTLY_WITH_FUZZERS=OFF)
    ;;
--app)
    build="${ZETTLY_APP_BUILD_DIR:-$root/build-app}"
    options=(-DZETTLY_WITH_TESTS=OFF -DZETTLY_WITH_BENCHMARKS=OFF -DZETTLY_WITH_FUZZERS=OFF)
    ;;
*)
    echo "usage: ${0##*/} [--gcc|--app]" >&2
    exit 2
    ;;
esac

if [ ! -f "$build/CMakeCache.txt" ]; then
    # A compiler cache, where there is one, makes the second build nearly free.
    if command -v ccache >/dev/null; then
        options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${options[@]}"
fi
cmake --build "$build" --parallel "$(nproc)"
