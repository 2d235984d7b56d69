// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionBackends.h"

#include "X11ClickMonitor.h"
#include "X11KeyGrabber.h"
#include "X11Pasteboard.h"
#include "X11PasteKeystroke.h"
#include "X11Workspace.h"

SessionBackends openX11Backends()
{
    // Without XTest the keystroke sends nothing, quietly: the entry stays on
    // the clipboard for the user to paste.
    return { std::make_unique<X11Pasteboard>(), std::make_unique<X11Workspace>(), std::make_unique<X11Workspace>(),
        std::make_unique<X11PasteKeystroke>(), std::make_unique<X11KeyGrabber>(), std::make_unique<X11ClickMonitor>(),
        nullptr };
}
