// SPDX-License-Identifier: GPL-3.0-or-later
#include "WlrToplevelWorkspace.h"

#include "WaylandConnection.h"

#include "wlr-foreign-toplevel-management-unstable-v1-client.h"

#include <wayland-client.h>

#include <algorithm>

namespace {

// Version 3 adds the parent event only; nothing here needs more.
constexpr quint32 managerVersion = 3;

} // namespace

struct WlrToplevelWorkspace::Toplevel : Window {
    WlrToplevelWorkspace *workspace;
    zwlr_foreign_toplevel_handle_v1 *handle;
    // What the compositor said since its last done event.
    std::optional<QString> pendingAppId;
    std::optional<bool> pendingActivated;

    Toplevel(WlrToplevelWorkspace *workspace, zwlr_foreign_toplevel_handle_v1 *handle)
        : workspace(workspace)
        , handle(handle)
    {
    }
    Q_DISABLE_COPY_MOVE(Toplevel)
    ~Toplevel() override { zwlr_foreign_toplevel_handle_v1_destroy(handle); }

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
        if (const std::optional<bool> activated = std::exchange(toplevel->pendingActivated, std::nullopt))
            toplevel->workspace->setActivated(*toplevel, *activated);
    }
    static void onClosed(void *data, zwlr_foreign_toplevel_handle_v1 *) { of(data)->workspace->remove(*of(data)); }
    static void onParent(void *, zwlr_foreign_toplevel_handle_v1 *, zwlr_foreign_toplevel_handle_v1 *) { }

    static const zwlr_foreign_toplevel_handle_v1_listener listener;
};

const zwlr_foreign_toplevel_handle_v1_listener WlrToplevelWorkspace::Toplevel::listener
    = { &onTitle, &onAppId, &onOutput, &onOutput, &onState, &onDone, &onClosed, &onParent };

bool WlrToplevelWorkspace::isOffered(const WaylandConnection &connection)
{
    return connection.offers(&zwlr_foreign_toplevel_manager_v1_interface);
}

WlrToplevelWorkspace::WlrToplevelWorkspace(std::unique_ptr<WaylandConnection> connection, const QStringList &ownAppIds)
    : WaylandWorkspace(std::move(connection), ownAppIds)
    , m_manager(static_cast<zwlr_foreign_toplevel_manager_v1 *>(
          this->connection().bind(&zwlr_foreign_toplevel_manager_v1_interface, managerVersion)))
    , m_seat(static_cast<wl_seat *>(this->connection().bind(&wl_seat_interface, 1)))
{
    static const zwlr_foreign_toplevel_manager_v1_listener managerListener = { &onToplevel, &onFinished };
    zwlr_foreign_toplevel_manager_v1_add_listener(m_manager, &managerListener, this);
}

WlrToplevelWorkspace::~WlrToplevelWorkspace()
{
    removeAll();
    // Stopping is a request the compositor answers with finished; the
    // connection closes before, which ends it as well.
    if (m_manager)
        zwlr_foreign_toplevel_manager_v1_destroy(m_manager);
    wl_seat_destroy(m_seat);
}

void WlrToplevelWorkspace::activateWindow(Window &window)
{
    zwlr_foreign_toplevel_handle_v1_activate(static_cast<Toplevel &>(window).handle, m_seat);
}

void WlrToplevelWorkspace::onToplevel(
    void *data, zwlr_foreign_toplevel_manager_v1 *, zwlr_foreign_toplevel_handle_v1 *handle)
{
    auto *workspace = static_cast<WlrToplevelWorkspace *>(data);
    auto &toplevel = static_cast<Toplevel &>(workspace->add(std::make_unique<Toplevel>(workspace, handle)));
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &Toplevel::listener, &toplevel);
}

void WlrToplevelWorkspace::onFinished(void *data, zwlr_foreign_toplevel_manager_v1 *)
{
    auto *workspace = static_cast<WlrToplevelWorkspace *>(data);
    zwlr_foreign_toplevel_manager_v1_destroy(std::exchange(workspace->m_manager, nullptr));
}
