// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class ClickMonitor;
class DesktopWindows;
class KeyGrabber;
class PasteKeystroke;
class Pasteboard;
class Workspace;

// What the running app needs of the desktop, picked once by the process
// entry: the session's in the app (X11 or Wayland), in memory in tests.
struct PlatformServices {
    Pasteboard &pasteboard;
    Workspace &workspace;
    // Null where the desktop lets no client grab keys or see others' clicks.
    KeyGrabber *keyGrabber;
    ClickMonitor *clickMonitor;
    DesktopWindows &desktopWindows;
    PasteKeystroke &pasteKeystroke;
};
