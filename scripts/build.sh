#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Configures and builds Zettly, its tests, benchmarks and fuzzers in build/.
# Safe to run again: only what changed is rebuilt.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="${ZETTLY_BUILD_DIR:-$root/build}"

# clang builds everything, so that the libFuzzer targets come with the rest.
if [ ! -f "$build/CMakeCache.txt" ]; then
    cmake -S "$root" -B "$build" -G Ninja \
        -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_CXX_COMPILER=clang++
fi
cmake --build "$build" --parallel "$(nproc)"
