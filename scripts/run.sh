#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what Zettly needs, builds it and starts it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
exec "${ZETTLY_BUILD_DIR:-$root/build}/app/zettly" "$@"
