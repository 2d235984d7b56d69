#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Measures the real zettly inside a headless sway of its own: how soon a
# native program's copy (wl-copy) reaches the history file, and how long
# `zettly --toggle` takes from its start until the running copy has carried
# it out, and how late a copy made right after a program that never answers
# arrives. Medians over 20 rounds; reports figures, asserts none.
#
#   measure-wayland.sh [--no-build]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="${ZETTLY_BUILD_DIR:-$root/build}"
[ "${1:-}" = --no-build ] || "$root/scripts/build.sh"
exec "$root/tests/wayland/with-sway.sh" -- python3 - "$build/app/zettly" "$build/tests/wayland/zettly_stuck_source" <<'PYTHON'
import json, os, statistics, subprocess, sys, tempfile, time

app, stuck_source = sys.argv[1], sys.argv[2]
home = tempfile.mkdtemp()
env = dict(os.environ, XDG_DATA_HOME=home + "/data", XDG_CONFIG_HOME=home + "/config")
clips = home + "/data/Zettly/clips.json"

def newest():
    try:
        with open(clips, "rb") as f:
            items = json.load(f)
        items = items.get("items", items) if isinstance(items, dict) else items
        return items[0].get("fullText") if items else None
    except (OSError, ValueError, IndexError, AttributeError):
        return None

def copy(text):
    subprocess.run(["wl-copy", text], check=True, env=env)

def wait_for(text, deadline):
    while time.monotonic() < deadline:
        if newest() == text:
            return True
        time.sleep(0.0005)
    return False

zettly = subprocess.Popen([app], env=env)
try:
    for probe in range(200):
        copy(f"prêt ? {probe}")
        if wait_for(f"prêt ? {probe}", time.monotonic() + 0.3):
            break
    else:
        sys.exit("zettly did not record")
    copies = []
    for i in range(20):
        text = f"mesure {i}"
        start = time.monotonic()
        copy(text)
        returned = time.monotonic()
        if wait_for(text, start + 5):
            copies.append(((time.monotonic() - start) * 1000, (time.monotonic() - returned) * 1000))
    after_stuck = []
    for i in range(10):
        stuck = subprocess.Popen([stuck_source], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        stuck.stdout.readline()
        text = f"après le silence {i}"
        start = time.monotonic()
        copy(text)
        returned = time.monotonic()
        if wait_for(text, start + 5):
            after_stuck.append((time.monotonic() - returned) * 1000)
        stuck.stdin.close()
        stuck.wait()
    toggles, versions = [], []
    for i in range(20):
        for command, times in ((["--toggle"], toggles), (["--version"], versions)):
            start = time.monotonic()
            subprocess.run([app] + command, check=True, env=env, stdout=subprocess.DEVNULL)
            times.append((time.monotonic() - start) * 1000)
    median = lambda values: statistics.median(values)
    print(f"copy to clips.json (the real zettly), {len(copies)}/20 recorded, medians: "
          f"from wl-copy's start {median([c[0] for c in copies]):.1f} ms, "
          f"from its return {median([c[1] for c in copies]):.1f} ms")
    print(f"copy right after a program that never answers, from wl-copy's return to clips.json: "
          f"median {median(after_stuck):.1f} ms, max {max(after_stuck):.1f} ms, {len(after_stuck)}/10 recorded")
    print(f"zettly --toggle, start to carried out: median {median(toggles):.1f} ms "
          f"(zettly --version, start to end: {median(versions):.1f} ms)")
finally:
    zettly.terminate()
    zettly.wait()
PYTHON
