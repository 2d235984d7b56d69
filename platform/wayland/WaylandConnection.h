// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>

#include <memory>

class QSocketNotifier;
struct wl_display;
struct wl_interface;
struct wl_registry;

// A connection of our own to the compositor, whose events are handled on the
// thread that opened it as they arrive, through its event loop.
class WaylandConnection : public QObject {
    Q_OBJECT

public:
    // Connects to $WAYLAND_DISPLAY and learns the globals offered; nothing
    // when there is no compositor.
    static std::unique_ptr<WaylandConnection> open();
    ~WaylandConnection() override;

    wl_display *display() const { return m_display; }
    // Binds the first global of that interface at the lower of version and
    // the offered one; nullptr when the compositor offers none.
    void *bind(const wl_interface *interface, quint32 version);
    bool offers(const wl_interface *interface) const;

    // Handles the events already received, without waiting for more.
    void dispatchArrived();
    // Sends the requests made so far.
    void flush();
    // The compositor went away or closed the connection on an error.
    bool isBroken() const { return m_broken; }

private:
    struct Global {
        quint32 name;
        QByteArray interface;
        quint32 version;
    };

    explicit WaylandConnection(wl_display *display);
    const Global *find(const wl_interface *interface) const;
    void markBroken();

    static void onGlobal(void *data, wl_registry *registry, quint32 name, const char *interface, quint32 version);
    static void onGlobalRemoved(void *data, wl_registry *registry, quint32 name);

    wl_display *m_display;
    wl_registry *m_registry = nullptr;
    QList<Global> m_globals;
    QSocketNotifier *m_notifier = nullptr;
    bool m_broken = false;
};
