#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what the tests need, builds everything with both of Debian's
# compilers and runs the tests through CTest against each build: clang++
# (build/) runs every test: unit, real-X (each under its own Xvfb), package
# and the short fuzzing runs; g++ (build-gcc/) runs the same but the
# package test (one .deb install is enough) and the fuzzers (clang only).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="${ZETTLY_BUILD_DIR:-$root/build}"
gccBuild="${ZETTLY_GCC_BUILD_DIR:-$root/build-gcc}"
"$root/scripts/install-deps.sh" all
"$root/scripts/build.sh"
"$root/scripts/build.sh" --gcc

status=0
run() {
    echo "== ctest in ${1#"$root"/}"
    ctest --test-dir "$1" --output-on-failure --parallel "$(nproc)" --timeout 600 "${@:2}" || status=1
}
run "$build"
run "$gccBuild" --label-exclude package
exit "$status"
