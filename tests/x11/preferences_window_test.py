#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The real zettly's preferences window, opened from the tray icon (trayer
hosts it) under openbox, driven with real keys and clicks and read through the
accessibility bus. Run inside with-xvfb.sh --wm --accessibility:
preferences_window_test.py <path of zettly>"""
import base64
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
import uuid

import pyatspi

ZETTLY = sys.argv.pop(1)
TITLE = "Zettly — Préférences"


def wait_for(condition, what, timeout=10, interval=0.05):
    """The condition's first true value, polled until the deadline."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"timed out waiting for {what}")
        time.sleep(interval)


def output(*command):
    return subprocess.run(list(map(str, command)), capture_output=True, text=True, timeout=10).stdout


def xdotool(*arguments):
    return output("xdotool", *arguments).split()


def geometry(window):
    """(x, y, width, height) of a window on the root."""
    values = dict(line.split("=") for line in xdotool("getwindowgeometry", "--shell", window))
    return tuple(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))


def is_viewable(window):
    return "IsViewable" in output("xwininfo", "-id", window)


def active_window():
    return int((xdotool("getactivewindow") or ["0"])[0])


def in_front(window, other):
    """Whether window is active and higher than other in the window manager's
    stacking."""
    stacking = re.findall(r"0x[0-9a-f]+", output("xprop", "-root", "_NET_CLIENT_LIST_STACKING"))
    order = [int(id, 16) for id in stacking]
    return active_window() == window and window in order and other in order and order.index(window) > order.index(other)


def copy(text):
    subprocess.run(["xclip", "-selection", "clipboard", "-i"], input=text.encode(), check=True, timeout=10)


class OtherApplication:
    """xev in a window of its own: another application to be in front, which
    tells which keys reach it."""

    def __init__(self):
        self.log = tempfile.TemporaryFile("w+")
        self.process = subprocess.Popen(
            ["xev", "-name", "autre-application", "-geometry", "500x400+390+200", "-event", "keyboard"],
            stdout=self.log, stderr=subprocess.DEVNULL)
        self.window = int(wait_for(lambda: xdotool("search", "--onlyvisible", "--name", "^autre-application$"),
                                   "the other application's window")[0])

    def activate(self):
        xdotool("windowactivate", "--sync", self.window)
        wait_for(lambda: active_window() == self.window, "the other application in front")

    def received(self, keycode, state):
        self.log.seek(0)
        return re.search(rf"KeyPress event.*\n.*\n\s*state {state:#x}, keycode {keycode} ", self.log.read())

    def close(self):
        self.process.terminate()
        self.process.wait(5)
        self.log.close()


class Zettly:
    """The app on a home of its own, and what it keeps there."""

    def __init__(self):
        self.home = tempfile.mkdtemp(prefix="zettly-preferences-")
        self.environment = dict(os.environ)
        for name in ("data", "config", "runtime"):
            os.mkdir(os.path.join(self.home, name), 0o700)
            self.environment[f"XDG_{name.upper()}_{'DIR' if name == 'runtime' else 'HOME'}"] = \
                os.path.join(self.home, name)
        self.process = None
        self.probes = 0

    def seed_history(self, entries):
        """entries: (text, pinned), top of the history first."""
        folder = os.path.join(self.home, "data", "Zettly")
        os.makedirs(folder, mode=0o700, exist_ok=True)
        now = time.time() - 978307200  # seconds since 2001
        items = [{"id": str(uuid.uuid4()).upper(), "kind": "text", "preview": text, "fullText": text,
                  "pinned": pinned, "createdAt": now - index} for index, (text, pinned) in enumerate(entries)]
        with open(os.path.join(folder, "clips.json"), "w") as file:
            json.dump(items, file)

    def newest(self):
        return next((text for text, pinned in self.history() if not pinned), "")

    def start(self):
        self.process = subprocess.Popen([ZETTLY], env=self.environment)
        self.probes += 1
        first = self.probes

        def recording():
            copy(f"prêt ? {self.probes}")
            self.probes += 1
            return self.newest().startswith("prêt ? ") and int(self.newest()[7:]) >= first
        wait_for(recording, "zettly recording copies", timeout=20, interval=0.3)
        # The last probe is still on the clipboard: once it is in, nothing
        # more comes on its own.
        wait_for(lambda: self.newest() == f"prêt ? {self.probes - 1}", "the last probe recorded")

    def read(self, path, empty):
        """A JSON file of its home; empty while it is missing or half written."""
        try:
            with open(os.path.join(self.home, path)) as file:
                return json.load(file)
        except (OSError, ValueError):
            return empty

    def history(self):
        return [(item["fullText"], item["pinned"]) for item in self.read("data/Zettly/clips.json", [])]

    def settings(self):
        return self.read("config/Zettly/defaults.json", {})

    def windows(self):
        return [int(window) for window in xdotool("search", "--onlyvisible", "--pid", self.process.pid)]

    def preferences_windows(self):
        return [int(window) for window in xdotool("search", "--name", f"^{TITLE}$")]

    def panel(self):
        return [window for window in self.windows() if geometry(window)[2:] == (360, 480)]

    def open_preferences(self):
        """Through the tray icon's menu, opened with a left click."""
        icons = wait_for(lambda: [window for window in self.windows() if geometry(window)[2] <= 48],
                         "the tray icon")
        before = set(self.windows())
        x, y, width, height = geometry(icons[0])
        xdotool("mousemove", x + width // 2, y + height // 2, "click", 1)
        wait_for(lambda: set(self.windows()) - before, "the tray menu")
        # "Ouvrir Zettly", a separator, then "Préférences…".
        xdotool("key", "Down", "Down", "Return")
        windows = wait_for(lambda: [window for window in self.preferences_windows() if is_viewable(window)],
                           "the preferences window")
        return windows[0]

    def stop(self):
        if self.process:
            self.process.terminate()
            self.process.wait(10)
        shutil.rmtree(self.home, ignore_errors=True)

    def accessible(self, role, name):
        """A control of the app's windows as the accessibility bus shows it."""
        def search():
            for application in pyatspi.Registry.getDesktop(0):
                if application is not None and application.get_process_id() == self.process.pid:
                    return pyatspi.findDescendant(
                        application, lambda node: node.getRoleName() == role and node.name == name)
            return None
        return wait_for(search, f"{role} '{name}' on the accessibility bus")

    def press(self, role, name):
        self.accessible(role, name).queryAction().doAction(0)


class PreferencesWindowTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.tray = subprocess.Popen(["trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
                                     "--height", "24", "--SetDockType", "true"],
                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for(lambda: xdotool("search", "--onlyvisible", "--class", "^trayer$"), "the tray host")

    @classmethod
    def tearDownClass(cls):
        cls.tray.terminate()
        cls.tray.wait(5)

    def setUp(self):
        self.zettly = Zettly()
        self.addCleanup(self.zettly.stop)
        self.other = OtherApplication()
        self.addCleanup(self.other.close)

    def test_one_window_in_front_back_where_it_was(self):
        self.zettly.start()
        self.other.activate()
        window = self.zettly.open_preferences()
        wait_for(lambda: in_front(window, self.other.window), "the preferences in front")
        self.assertEqual(geometry(window)[2:], (600, 440))

        self.other.activate()
        self.assertEqual(self.zettly.open_preferences(), window)
        self.assertEqual(self.zettly.preferences_windows(), [window])
        wait_for(lambda: in_front(window, self.other.window), "the preferences in front again")

        xdotool("windowsize", "--sync", window, 700, 500)
        xdotool("windowmove", "--sync", window, 120, 140)
        moved = wait_for(lambda: geometry(window)[2:] == (700, 500) and geometry(window), "the window moved")
        # Closed as a user closes it: the window manager's Alt+F4.
        xdotool("key", "alt+F4")
        wait_for(lambda: not is_viewable(window), "the window hidden")
        self.assertEqual(self.zettly.process.poll(), None)
        # Qt gives a closed window a new X window when it is shown again.
        window = self.zettly.open_preferences()
        self.assertEqual(self.zettly.preferences_windows(), [window])
        self.assertEqual(geometry(window), moved)

        # The update check comes forward even from a window behind another.
        self.other.activate()
        self.zettly.press("push button", "Rechercher les mises à jour")
        wait_for(lambda: [dialog for dialog in xdotool("search", "--onlyvisible", "--name", "^Mises à jour de Zettly$")
                          if int(dialog) == active_window()], "the update dialog in front")

    def test_records_a_new_shortcut_with_real_keys(self):
        self.zettly.start()
        self.zettly.open_preferences()
        self.zettly.press("page tab", "Raccourci")
        self.zettly.press("push button", "Modifier le raccourci")
        self.zettly.accessible("push button", "Appuyez sur le raccourci…  (Échap pour annuler)")
        # The current shortcut itself is recorded rather than opening the picker.
        xdotool("key", "ctrl+super+v")
        self.zettly.accessible("push button", "Modifier le raccourci")
        self.assertEqual(self.zettly.panel(), [])
        self.zettly.press("push button", "Modifier le raccourci")
        self.zettly.accessible("push button", "Appuyez sur le raccourci…  (Échap pour annuler)")
        xdotool("key", "alt+super+space")
        wait_for(lambda: self.zettly.settings().get("zettly.hotkey"), "the shortcut written")
        self.zettly.accessible("label", "⌥⌘Space")
        self.assertEqual(json.loads(base64.b64decode(self.zettly.settings()["zettly.hotkey"]["data"])),
                         {"keyCode": 49, "modifiers": 2304})

        xdotool("key", "alt+super+space")
        wait_for(self.zettly.panel, "the picker opened by the new shortcut")
        xdotool("key", "alt+super+space")
        wait_for(lambda: not self.zettly.panel(), "the picker closed by the new shortcut")
        # The old one now reaches the application in front: v with Control
        # and Super.
        self.other.activate()
        xdotool("key", "ctrl+super+v")
        wait_for(lambda: self.other.received(55, 0x44), "the old shortcut typed into the other application")
        self.assertEqual(self.zettly.panel(), [])

    def test_history_limit_privacy_and_clearing(self):
        pinned = [("épinglé 1", True), ("épinglé 2", True)]
        self.zettly.seed_history(pinned + [(f"copie {n}", False) for n in range(25)])
        self.zettly.start()
        before = len(self.zettly.history())
        self.zettly.open_preferences()

        # Page Down on the limit: ten steps of 20 down from 200, held at 20.
        limit = self.zettly.accessible("spin button", "Limite d'historique :")
        limit.queryComponent().grabFocus()
        wait_for(lambda: limit.getState().contains(pyatspi.STATE_FOCUSED), "the limit focused")
        xdotool("key", "Page_Down")
        wait_for(lambda: self.zettly.settings().get("zettly.historyLimit") == 20, "the limit written")
        self.zettly.accessible("label", "20 items")
        self.assertEqual(len(self.zettly.history()), before)

        # The privacy switch, through the accessibility bus.
        self.zettly.press("page tab", "Confidentialité")
        switch = self.zettly.accessible("check box", "Ignorer les apps sensibles (gestionnaires de mots de passe)")
        self.assertTrue(switch.getState().contains(pyatspi.STATE_CHECKED))
        switch.queryAction().doAction(0)
        wait_for(lambda: self.zettly.settings().get("zettly.ignoreSecretApps") is False, "the switch written")

        self.zettly.press("page tab", "Général")
        self.zettly.press("push button", "Vider l'historique non épinglé")
        wait_for(lambda: self.zettly.history() == pinned, "the unpinned entries cleared")
        self.zettly.accessible("label", "2 items au total")


if __name__ == "__main__":
    unittest.main(verbosity=2)
