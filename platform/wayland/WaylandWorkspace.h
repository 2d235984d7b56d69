// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Workspace.h"

#include <QStringList>

#include <memory>
#include <vector>

class WaylandConnection;
struct wl_seat;
struct zwlr_foreign_toplevel_manager_v1;

// The session's windows as a wlroots compositor lists them to clients
// (wlr-foreign-toplevel-management), on a connection of our own: the window
// in front is the one the compositor marks activated, identified by its
// app_id (an X11 window's is its WM_CLASS class). Each window gets an id of
// ours that stays the same while it lives.
class WaylandWorkspace : public Workspace {
public:
    struct Toplevel;

    // ownAppIds: the app_ids our own windows carry, which identify as
    // ownIdentifier. Nothing when there is no compositor or it does not list
    // its windows.
    static std::unique_ptr<WaylandWorkspace> open(const QStringList &ownAppIds = { ownIdentifier });
    ~WaylandWorkspace() override;

    std::optional<RunningApp> frontmostApp() const override;
    // Asks the compositor to bring the window to the front with the keyboard
    // focus. Does nothing when it has closed.
    void activate(const RunningApp &app);

    // Called by the protocol's listeners.
    void addToplevel(void *handle);
    void removeToplevel(Toplevel *toplevel);
    void managerFinished();

private:
    WaylandWorkspace(std::unique_ptr<WaylandConnection> connection, QStringList ownAppIds);

    std::unique_ptr<WaylandConnection> m_connection;
    QStringList m_ownAppIds;
    zwlr_foreign_toplevel_manager_v1 *m_manager = nullptr;
    wl_seat *m_seat = nullptr;
    std::vector<std::unique_ptr<Toplevel>> m_toplevels;
    quint64 m_lastId = 0;
    quint64 m_activations = 0;
};
