// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandWorkspace.h"

#include "PlasmaWindowWorkspace.h"
#include "WaylandConnection.h"
#include "WlrToplevelWorkspace.h"

#include <wayland-client.h>

#include <algorithm>

std::unique_ptr<WaylandWorkspace> WaylandWorkspace::open(const QStringList &ownAppIds)
{
    std::unique_ptr<WaylandConnection> connection = WaylandConnection::open();
    if (!connection || !connection->offers(&wl_seat_interface))
        return nullptr;
    std::unique_ptr<WaylandWorkspace> workspace;
    if (WlrToplevelWorkspace::isOffered(*connection))
        workspace = std::make_unique<WlrToplevelWorkspace>(std::move(connection), ownAppIds);
    else if (PlasmaWindowWorkspace::isOffered(*connection))
        workspace = std::make_unique<PlasmaWindowWorkspace>(std::move(connection), ownAppIds);
    else
        return nullptr;
    // The windows already there, with their state, before anyone asks.
    wl_display_roundtrip(workspace->connection().display());
    return workspace;
}

WaylandWorkspace::WaylandWorkspace(std::unique_ptr<WaylandConnection> connection, QStringList ownAppIds)
    : m_connection(std::move(connection))
    , m_ownAppIds(std::move(ownAppIds))
{
}

WaylandWorkspace::~WaylandWorkspace() = default;

std::optional<RunningApp> WaylandWorkspace::frontmostApp() const
{
    // The activation may have arrived without the event loop having run
    // since: a copy right after a click in another window.
    m_connection->dispatchArrived();
    const Window *front = nullptr;
    for (const std::unique_ptr<Window> &window : m_windows) {
        if (window->activated && (!front || window->activation > front->activation))
            front = window.get();
    }
    if (!front)
        return std::nullopt;
    if (m_ownAppIds.contains(front->appId))
        return RunningApp { front->id, ownIdentifier };
    return RunningApp { front->id, front->appId.isEmpty() ? std::nullopt : std::optional(front->appId) };
}

void WaylandWorkspace::activate(const RunningApp &app)
{
    m_connection->dispatchArrived();
    const auto found = std::find_if(m_windows.cbegin(), m_windows.cend(),
        [&](const std::unique_ptr<Window> &window) { return window->id == app.windowId; });
    if (found == m_windows.cend())
        return;
    activateWindow(**found);
    m_connection->flush();
}

WaylandWorkspace::Window &WaylandWorkspace::add(std::unique_ptr<Window> window)
{
    window->id = ++m_lastId;
    m_windows.push_back(std::move(window));
    return *m_windows.back();
}

void WaylandWorkspace::remove(const Window &window)
{
    std::erase_if(m_windows, [&](const std::unique_ptr<Window> &each) { return each.get() == &window; });
}

void WaylandWorkspace::setActivated(Window &window, bool activated)
{
    if (activated && !window.activated)
        window.activation = ++m_activations;
    window.activated = activated;
}
