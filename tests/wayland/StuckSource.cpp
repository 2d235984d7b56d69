// SPDX-License-Identifier: GPL-3.0-or-later
#include "StuckSource.h"

#include "wlr-data-control-unstable-v1-client.h"

#include <wayland-client.h>

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

StuckSource::StuckSource()
    : m_display(wl_display_connect(nullptr))
{
}

StuckSource::~StuckSource()
{
    if (m_display)
        wl_display_disconnect(m_display);
}

bool StuckSource::takeClipboard(const QString &type)
{
    if (!m_display)
        return false;
    if (!m_manager) {
        Globals globals;
        wl_registry *registry = wl_display_get_registry(m_display);
        wl_registry_add_listener(registry, &registryListener, &globals);
        wl_display_roundtrip(m_display);
        if (!globals.seat || !globals.manager)
            return false;
        m_manager = globals.manager;
        m_device = zwlr_data_control_manager_v1_get_data_device(m_manager, globals.seat);
    }
    m_source = zwlr_data_control_manager_v1_create_data_source(m_manager);
    zwlr_data_control_source_v1_offer(m_source, type.toUtf8().constData());
    zwlr_data_control_device_v1_set_selection(m_device, m_source);
    // Past this, no event is read: requests for the data wait forever.
    return wl_display_flush(m_display) >= 0;
}
