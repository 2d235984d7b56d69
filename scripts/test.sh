#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what the tests need, builds everything and runs every test through
# CTest: unit tests, real-X tests (each under its own Xvfb), the crash test
# and short fuzzing runs.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="${ZETTLY_BUILD_DIR:-$root/build}"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
cd "$build"
ctest --output-on-failure --parallel "$(nproc)" --timeout 600
