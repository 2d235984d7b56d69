// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "WaylandWorkspace.h"

struct org_kde_plasma_window_management;

// The windows as KDE's KWin lists them (org_kde_plasma_window_management).
// KWin lists them only to the programs whose desktop entry names that
// interface in X-KDE-Wayland-Interfaces.
class PlasmaWindowWorkspace : public WaylandWorkspace {
public:
    static bool isOffered(const WaylandConnection &connection);
    PlasmaWindowWorkspace(std::unique_ptr<WaylandConnection> connection, const QStringList &ownAppIds);
    ~PlasmaWindowWorkspace() override;

private:
    struct PlasmaWindow;

    void activateWindow(Window &window) override;

    static void onShowDesktopChanged(void *data, org_kde_plasma_window_management *management, quint32 state);
    static void onWindow(void *data, org_kde_plasma_window_management *management, quint32 internalId);
    static void onStackingOrderChanged(void *data, org_kde_plasma_window_management *management, struct wl_array *ids);
    static void onStackingOrderUuidChanged(void *data, org_kde_plasma_window_management *management, const char *uuids);

    org_kde_plasma_window_management *m_management;
};
