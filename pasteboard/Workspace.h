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

// Which application the user is working in: capture records it with each
// copy, the picker remembers it to paste back into.
class Workspace {
public:
    // Our own windows identify as this.
    static inline const QString ownIdentifier = QStringLiteral("com.marovelin.zettly");

    virtual ~Workspace() = default;

    // The application whose window is active, if any.
    virtual std::optional<RunningApp> frontmostApp() const = 0;
};
