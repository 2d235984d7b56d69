#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Measures the real zettly inside a headless sway of its own: how soon a
# native program's copy (wl-copy) reaches the history file, and how long
# `zettly --toggle` takes from its start until the running copy has carried
# it out or until sway has mapped the picker, how late a copy made right after
# a program that never answers arrives, and how soon Return in the picker
# pastes into a native window; and how long the main thread is held up by a
# program that never answers. Medians over 20 rounds (10 for the paste and the
# frozen program); reports figures, asserts none.
#
#   measure-wayland.sh [--no-build]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="${ZETTLY_BUILD_DIR:-$root/build}"
[ "${1:-}" = --no-build ] || "$root/scripts/build.sh"
"$root/tests/wayland/with-sway.sh" -- python3 - "$build/app/zettly" "$build/tests/wayland/zettly_stuck_source" \
    "$build/tests/wayland/zettly_key_window" <<'PYTHON'
import json, os, statistics, subprocess, sys, tempfile, time

app, stuck_source, key_window = sys.argv[1], sys.argv[2], sys.argv[3]
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
    # sway tells each window event on this stream as it happens.
    events = subprocess.Popen(["swaymsg", "-t", "subscribe", "-m", '["window"]'], stdout=subprocess.PIPE, text=True)
    def next_event(change):
        while True:
            event = json.loads(events.stdout.readline())
            if event["change"] == change and event["container"].get("app_id") == "com.marovelin.zettly":
                return time.monotonic()
    target = subprocess.Popen([key_window, "org.zettly.test.target"], stdout=subprocess.PIPE, text=True)
    target.stdout.readline()
    shown, pastes = [], []
    for i in range(20):
        start = time.monotonic()
        subprocess.run([app, "--show"], check=True, env=env)
        shown.append((next_event("focus") - start) * 1000)
        subprocess.run([app, "--hide"], check=True, env=env)
        next_event("close")
    for i in range(10):
        subprocess.run([app, "--show"], check=True, env=env)
        next_event("focus")
        start = time.monotonic()
        subprocess.run(["wtype", "-k", "Return"], check=True)
        while target.stdout.readline().strip() != "Ctrl+V":
            pass
        pastes.append((time.monotonic() - start) * 1000)
    target.terminate()
    events.terminate()
    median = lambda values: statistics.median(values)
    print(f"copy to clips.json (the real zettly), {len(copies)}/20 recorded, medians: "
          f"from wl-copy's start {median([c[0] for c in copies]):.1f} ms, "
          f"from its return {median([c[1] for c in copies]):.1f} ms")
    print(f"copy right after a program that never answers, from wl-copy's return to clips.json: "
          f"median {median(after_stuck):.1f} ms, max {max(after_stuck):.1f} ms, {len(after_stuck)}/10 recorded")
    print(f"zettly --toggle, start to carried out: median {median(toggles):.1f} ms "
          f"(zettly --version, start to end: {median(versions):.1f} ms)")
    print(f"zettly --show, start to the picker mapped and focused: median {median(shown):.1f} ms, "
          f"max {max(shown):.1f} ms")
    print(f"Return in the picker (wtype's start) to Ctrl+V in the native window in front: "
          f"median {median(pastes):.1f} ms, max {max(pastes):.1f} ms, {len(pastes)}/10")
finally:
    zettly.terminate()
    zettly.wait()
PYTHON
# The same frozen program against the clipboard reader alone, with a heartbeat
# on its main thread.
exec "$root/tests/wayland/with-sway.sh" -- "$build/bench/wayland_stall" "$build/tests/wayland/zettly_stuck_source"
