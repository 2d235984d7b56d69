#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what building and running Zettly needs, builds the app alone (in
# build-app/, no tests) and starts it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh" app
"$root/scripts/build.sh" --app
exec "${ZETTLY_APP_BUILD_DIR:-$root/build-app}/app/zettly" "$@"
