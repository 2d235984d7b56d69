// SPDX-License-Identifier: GPL-3.0-or-later
// Takes the session's clipboard offering text, then never answers: it reads no
// more events, so every transfer asked of it stays open. Prints "ready" once
// it owns the clipboard, and holds on until its standard input closes. The
// tests and measure-wayland.sh copy after it.
#include "wlr-data-control-unstable-v1-client.h"

#include <wayland-client.h>

#include <cstdio>
#include <cstring>

namespace {

struct Globals {
    wl_seat *seat = nullptr;
    zwlr_data_control_manager_v1 *manager = nullptr;
};

void onGlobal(void *data, wl_registry *registry, uint32_t name, const char *interface, uint32_t)
{
    auto *globals = static_cast<Globals *>(data);
    if (std::strcmp(interface, wl_seat_interface.name) == 0 && !globals->seat)
        globals->seat = static_cast<wl_seat *>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
    else if (std::strcmp(interface, zwlr_data_control_manager_v1_interface.name) == 0)
        globals->manager = static_cast<zwlr_data_control_manager_v1 *>(
            wl_registry_bind(registry, name, &zwlr_data_control_manager_v1_interface, 1));
}

void onGlobalRemoved(void *, wl_registry *, uint32_t) { }

const wl_registry_listener registryListener = { &onGlobal, &onGlobalRemoved };

} // namespace

int main()
{
    wl_display *display = wl_display_connect(nullptr);
    Globals globals;
    if (display) {
        wl_registry_add_listener(wl_display_get_registry(display), &registryListener, &globals);
        wl_display_roundtrip(display);
    }
    if (!globals.seat || !globals.manager) {
        std::fputs("no wlr data-control here\n", stderr);
        return 1;
    }
    zwlr_data_control_device_v1 *device = zwlr_data_control_manager_v1_get_data_device(globals.manager, globals.seat);
    zwlr_data_control_source_v1 *source = zwlr_data_control_manager_v1_create_data_source(globals.manager);
    zwlr_data_control_source_v1_offer(source, "text/plain;charset=utf-8");
    zwlr_data_control_device_v1_set_selection(device, source);
    // Past this, no event is read: requests for the data wait forever.
    if (wl_display_flush(display) < 0)
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF) { }
    wl_display_disconnect(display);
    return 0;
}
