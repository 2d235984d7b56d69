// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class ClickMonitor;
class DesktopWindows;
class KeyGrabber;
class PasteKeystroke;
class Pasteboard;
class Workspace;

// What the running app needs of the desktop, picked once by the process
// entry: X11 in the app, in memory in tests.
struct PlatformServices {
    Pasteboard &pasteboard;
    Workspace &workspace;
    KeyGrabber &keyGrabber;
    ClickMonitor &clickMonitor;
    DesktopWindows &desktopWindows;
    PasteKeystroke &pasteKeystroke;
};
