// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandSessionProbe.h"

#include "ext-data-control-v1-client.h"
#include "plasma-window-management-client.h"
#include "wlr-data-control-unstable-v1-client.h"
#include "wlr-foreign-toplevel-management-unstable-v1-client.h"

#include <QtGlobal>

#include <wayland-client.h>

#include <cstring>

namespace {

struct Offered {
    bool dataControl = false;
    bool windowList = false;
};

void onGlobal(void *data, wl_registry *, quint32, const char *interface, quint32)
{
    auto *offered = static_cast<Offered *>(data);
    const auto is = [interface](const wl_interface &known) { return std::strcmp(interface, known.name) == 0; };
    if (is(ext_data_control_manager_v1_interface) || is(zwlr_data_control_manager_v1_interface))
        offered->dataControl = true;
    if (is(zwlr_foreign_toplevel_manager_v1_interface) || is(org_kde_plasma_window_management_interface))
        offered->windowList = true;
}

void onGlobalRemoved(void *, wl_registry *, quint32) { }

} // namespace

bool WaylandSessionProbe::hostsNativeWindows()
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return false;
    wl_display *display = wl_display_connect(nullptr);
    if (!display)
        return false;
    static const wl_registry_listener listener = { &onGlobal, &onGlobalRemoved };
    Offered offered;
    wl_registry *registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &listener, &offered);
    const bool answered = wl_display_roundtrip(display) >= 0;
    wl_registry_destroy(registry);
    wl_display_disconnect(display);
    return answered && offered.dataControl && offered.windowList;
}
