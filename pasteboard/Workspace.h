// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

// An application window the user works in.
struct RunningApp {
    // The window system's handle of the application's top-level window.
    quint64 windowId = 0;
    // The application's identifier (a desktop-entry id or a window class),
    // when it has one.
    std::optional<QString> identifier;

    friend bool operator==(const RunningApp &, const RunningApp &) = default;
};

// The desktop's applications, as far as Zettly needs them.
class Workspace {
public:
    // Our own windows identify as this.
    static inline const QString ownIdentifier = QStringLiteral("com.marovelin.zettly");

    virtual ~Workspace() = default;

    // The application whose window is active, if any.
    virtual std::optional<RunningApp> frontmostApp() const = 0;
    // Brings the application's window to the front and gives it the focus.
    // Does nothing when the window has gone.
    virtual void activate(const RunningApp &app) = 0;
    // Whether a compositing manager runs, so that windows may be translucent.
    virtual bool hasCompositor() const = 0;
    // Asks for one of our top-level windows to be a floating panel: on every
    // desktop, without a taskbar or pager entry. Takes effect at the next
    // mapping, so call it while the window is hidden: window managers drop
    // these hints when a window is withdrawn.
    virtual void prepareFloatingPanel(quint64 windowId) = 0;
};
