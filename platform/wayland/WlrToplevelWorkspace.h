// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "WaylandWorkspace.h"

struct wl_seat;
struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

// The windows as wlroots compositors list them
// (wlr-foreign-toplevel-management).
class WlrToplevelWorkspace : public WaylandWorkspace {
public:
    static bool isOffered(const WaylandConnection &connection);
    WlrToplevelWorkspace(std::unique_ptr<WaylandConnection> connection, const QStringList &ownAppIds);
    ~WlrToplevelWorkspace() override;

private:
    struct Toplevel;

    void activateWindow(Window &window) override;

    static void onToplevel(
        void *data, zwlr_foreign_toplevel_manager_v1 *manager, zwlr_foreign_toplevel_handle_v1 *handle);
    static void onFinished(void *data, zwlr_foreign_toplevel_manager_v1 *manager);

    zwlr_foreign_toplevel_manager_v1 *m_manager;
    wl_seat *m_seat;
};
