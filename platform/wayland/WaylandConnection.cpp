// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandConnection.h"

#include <QSocketNotifier>

#include <wayland-client.h>

#include <poll.h>

#include <algorithm>
#include <cerrno>

std::unique_ptr<WaylandConnection> WaylandConnection::open()
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullptr;
    wl_display *display = wl_display_connect(nullptr);
    if (!display)
        return nullptr;
    static const wl_registry_listener registryListener = { &onGlobal, &onGlobalRemoved };
    std::unique_ptr<WaylandConnection> connection(new WaylandConnection(display));
    connection->m_registry = wl_display_get_registry(display);
    wl_registry_add_listener(connection->m_registry, &registryListener, connection.get());
    if (wl_display_roundtrip(display) < 0)
        return nullptr;
    return connection;
}

WaylandConnection::WaylandConnection(wl_display *display)
    : m_display(display)
    , m_notifier(new QSocketNotifier(wl_display_get_fd(display), QSocketNotifier::Read, this))
{
    connect(m_notifier, &QSocketNotifier::activated, this, &WaylandConnection::dispatchArrived);
}

WaylandConnection::~WaylandConnection()
{
    delete m_notifier;
    if (m_registry)
        wl_registry_destroy(m_registry);
    wl_display_disconnect(m_display);
}

void *WaylandConnection::bind(const wl_interface *interface, quint32 version)
{
    const Global *global = find(interface);
    if (!global)
        return nullptr;
    return wl_registry_bind(m_registry, global->name, interface, std::min(version, global->version));
}

bool WaylandConnection::offers(const wl_interface *interface) const
{
    return find(interface) != nullptr;
}

void WaylandConnection::dispatchArrived()
{
    if (m_broken)
        return;
    while (wl_display_prepare_read(m_display) != 0) {
        if (wl_display_dispatch_pending(m_display) < 0)
            return markBroken();
    }
    wl_display_flush(m_display);
    pollfd socket { wl_display_get_fd(m_display), POLLIN, 0 };
    if (poll(&socket, 1, 0) > 0 && (socket.revents & POLLIN)) {
        if (wl_display_read_events(m_display) < 0)
            return markBroken();
    } else {
        wl_display_cancel_read(m_display);
        if (socket.revents & (POLLERR | POLLHUP))
            return markBroken();
    }
    if (wl_display_dispatch_pending(m_display) < 0)
        markBroken();
}

void WaylandConnection::flush()
{
    if (!m_broken && wl_display_flush(m_display) < 0 && errno != EAGAIN)
        markBroken();
}

const WaylandConnection::Global *WaylandConnection::find(const wl_interface *interface) const
{
    const auto found = std::find_if(m_globals.cbegin(), m_globals.cend(),
        [&](const Global &global) { return global.interface == interface->name; });
    return found == m_globals.cend() ? nullptr : &*found;
}

void WaylandConnection::markBroken()
{
    m_broken = true;
    // A broken socket stays readable: it would wake the loop for ever.
    m_notifier->setEnabled(false);
}

void WaylandConnection::onGlobal(void *data, wl_registry *, quint32 name, const char *interface, quint32 version)
{
    static_cast<WaylandConnection *>(data)->m_globals.append({ name, QByteArray(interface), version });
}

void WaylandConnection::onGlobalRemoved(void *data, wl_registry *, quint32 name)
{
    static_cast<WaylandConnection *>(data)->m_globals.removeIf(
        [&](const Global &global) { return global.name == name; });
}
