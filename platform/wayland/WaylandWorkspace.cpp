// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandWorkspace.h"

#include "WaylandConnection.h"

#include "wlr-foreign-toplevel-management-unstable-v1-client.h"

#include <wayland-client.h>

#include <algorithm>

namespace {

// Version 3 adds the parent event only; nothing here needs more.
constexpr quint32 managerVersion = 3;

} // namespace

struct WaylandWorkspace::Toplevel {
    WaylandWorkspace *workspace;
    zwlr_foreign_toplevel_handle_v1 *handle;
    quint64 id;
    QString appId;
    bool activated = false;
    // Which activation made it the active one: with several seats, several
    // windows may be active, and the latest is in front.
    quint64 activation = 0;
    // What the compositor said since its last done event.
    std::optional<QString> pendingAppId;
    std::optional<bool> pendingActivated;

    Toplevel(WaylandWorkspace *workspace, zwlr_foreign_toplevel_handle_v1 *handle, quint64 id)
        : workspace(workspace)
        , handle(handle)
        , id(id)
    {
    }
    Q_DISABLE_COPY_MOVE(Toplevel)
    ~Toplevel() { zwlr_foreign_toplevel_handle_v1_destroy(handle); }

    static Toplevel *of(void *data) { return static_cast<Toplevel *>(data); }

    static void onTitle(void *, zwlr_foreign_toplevel_handle_v1 *, const char *) { }
    static void onAppId(void *data, zwlr_foreign_toplevel_handle_v1 *, const char *appId)
    {
        of(data)->pendingAppId = QString::fromUtf8(appId);
    }
    static void onOutput(void *, zwlr_foreign_toplevel_handle_v1 *, wl_output *) { }
    static void onState(void *data, zwlr_foreign_toplevel_handle_v1 *, wl_array *states)
    {
        const auto *begin = static_cast<const quint32 *>(states->data);
        const auto *end = begin + states->size / sizeof(quint32);
        of(data)->pendingActivated = std::find(begin, end, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) != end;
    }
    static void onDone(void *data, zwlr_foreign_toplevel_handle_v1 *)
    {
        Toplevel *toplevel = of(data);
        if (toplevel->pendingAppId)
            toplevel->appId = *std::exchange(toplevel->pendingAppId, std::nullopt);
        if (const std::optional<bool> activated = std::exchange(toplevel->pendingActivated, std::nullopt)) {
            if (*activated && !toplevel->activated)
                toplevel->activation = ++toplevel->workspace->m_activations;
            toplevel->activated = *activated;
        }
    }
    static void onClosed(void *data, zwlr_foreign_toplevel_handle_v1 *)
    {
        of(data)->workspace->removeToplevel(of(data));
    }
    static void onParent(void *, zwlr_foreign_toplevel_handle_v1 *, zwlr_foreign_toplevel_handle_v1 *) { }

    static const zwlr_foreign_toplevel_handle_v1_listener listener;
};

const zwlr_foreign_toplevel_handle_v1_listener WaylandWorkspace::Toplevel::listener
    = { &onTitle, &onAppId, &onOutput, &onOutput, &onState, &onDone, &onClosed, &onParent };

namespace {

void onToplevel(void *data, zwlr_foreign_toplevel_manager_v1 *, zwlr_foreign_toplevel_handle_v1 *handle)
{
    static_cast<WaylandWorkspace *>(data)->addToplevel(handle);
}

void onFinished(void *data, zwlr_foreign_toplevel_manager_v1 *)
{
    static_cast<WaylandWorkspace *>(data)->managerFinished();
}

const zwlr_foreign_toplevel_manager_v1_listener managerListener = { &onToplevel, &onFinished };

} // namespace

std::unique_ptr<WaylandWorkspace> WaylandWorkspace::open(const QStringList &ownAppIds)
{
    std::unique_ptr<WaylandConnection> connection = WaylandConnection::open();
    if (!connection || !connection->offers(&zwlr_foreign_toplevel_manager_v1_interface)
        || !connection->offers(&wl_seat_interface))
        return nullptr;
    std::unique_ptr<WaylandWorkspace> workspace(new WaylandWorkspace(std::move(connection), ownAppIds));
    // The windows already there, with their state, before anyone asks.
    wl_display_roundtrip(workspace->m_connection->display());
    return workspace;
}

WaylandWorkspace::WaylandWorkspace(std::unique_ptr<WaylandConnection> connection, QStringList ownAppIds)
    : m_connection(std::move(connection))
    , m_ownAppIds(std::move(ownAppIds))
    , m_manager(static_cast<zwlr_foreign_toplevel_manager_v1 *>(
          m_connection->bind(&zwlr_foreign_toplevel_manager_v1_interface, managerVersion)))
    , m_seat(static_cast<wl_seat *>(m_connection->bind(&wl_seat_interface, 1)))
{
    zwlr_foreign_toplevel_manager_v1_add_listener(m_manager, &managerListener, this);
}

WaylandWorkspace::~WaylandWorkspace()
{
    m_toplevels.clear();
    // Stopping is a request the compositor answers with finished; the
    // connection closes before, which ends it as well.
    if (m_manager)
        zwlr_foreign_toplevel_manager_v1_destroy(m_manager);
    wl_seat_destroy(m_seat);
}

std::optional<RunningApp> WaylandWorkspace::frontmostApp() const
{
    // The activation may have arrived without the event loop having run
    // since: a copy right after a click in another window.
    m_connection->dispatchArrived();
    const Toplevel *front = nullptr;
    for (const std::unique_ptr<Toplevel> &toplevel : m_toplevels) {
        if (toplevel->activated && (!front || toplevel->activation > front->activation))
            front = toplevel.get();
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
    const auto found = std::find_if(m_toplevels.cbegin(), m_toplevels.cend(),
        [&](const std::unique_ptr<Toplevel> &toplevel) { return toplevel->id == app.windowId; });
    if (found == m_toplevels.cend())
        return;
    zwlr_foreign_toplevel_handle_v1_activate((*found)->handle, m_seat);
    m_connection->flush();
}

void WaylandWorkspace::addToplevel(void *handle)
{
    auto *toplevelHandle = static_cast<zwlr_foreign_toplevel_handle_v1 *>(handle);
    m_toplevels.push_back(std::make_unique<Toplevel>(this, toplevelHandle, ++m_lastId));
    zwlr_foreign_toplevel_handle_v1_add_listener(toplevelHandle, &Toplevel::listener, m_toplevels.back().get());
}

void WaylandWorkspace::removeToplevel(Toplevel *toplevel)
{
    std::erase_if(m_toplevels, [&](const std::unique_ptr<Toplevel> &each) { return each.get() == toplevel; });
}

void WaylandWorkspace::managerFinished()
{
    zwlr_foreign_toplevel_manager_v1_destroy(std::exchange(m_manager, nullptr));
}
