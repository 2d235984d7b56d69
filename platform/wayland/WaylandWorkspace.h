// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Workspace.h"

#include <QStringList>

#include <memory>
#include <vector>

class WaylandConnection;

// The session's windows as the compositor lists them to clients, on a
// connection of our own: the window in front is the one the compositor marks
// active, identified by its app_id (an X11 window's is its WM_CLASS class).
// Each window gets an id of ours that stays the same while it lives.
class WaylandWorkspace : public Workspace {
public:
    // Through the list the compositor offers: wlroots' foreign-toplevel,
    // else KDE's window management. ownAppIds: the app_ids our own windows
    // carry, which identify as ownIdentifier. Nothing when there is no
    // compositor or it lists its windows to no client.
    static std::unique_ptr<WaylandWorkspace> open(const QStringList &ownAppIds = { ownIdentifier });
    ~WaylandWorkspace() override;

    std::optional<RunningApp> frontmostApp() const override;
    // Asks the compositor to bring the window to the front with the keyboard
    // focus. Does nothing when it has closed.
    void activate(const RunningApp &app);

protected:
    // One window as the protocol lists it; the protocol's own kind holds its
    // handle.
    struct Window {
        virtual ~Window() = default;
        quint64 id = 0;
        QString appId;
        bool activated = false;
        // Which activation made it the active one: with several seats,
        // several windows may be active, and the latest is in front.
        quint64 activation = 0;
    };

    WaylandWorkspace(std::unique_ptr<WaylandConnection> connection, QStringList ownAppIds);

    WaylandConnection &connection() const { return *m_connection; }
    // Gives the window its id and keeps it until it goes.
    Window &add(std::unique_ptr<Window> window);
    void remove(const Window &window);
    // Before the protocol objects the windows hang on go.
    void removeAll() { m_windows.clear(); }
    void setActivated(Window &window, bool activated);
    virtual void activateWindow(Window &window) = 0;

private:
    std::unique_ptr<WaylandConnection> m_connection;
    QStringList m_ownAppIds;
    std::vector<std::unique_ptr<Window>> m_windows;
    quint64 m_lastId = 0;
    quint64 m_activations = 0;
};
