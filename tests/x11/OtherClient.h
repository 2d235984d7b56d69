// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QRect>

#include <cstdint>

struct xcb_connection_t;

// Another program on the test's X server, on a connection of its own: it
// makes windows, grabs keys and looks at other clients' windows.
class OtherClient {
public:
    OtherClient();
    ~OtherClient();
    OtherClient(const OtherClient &) = delete;
    OtherClient &operator=(const OtherClient &) = delete;

    xcb_connection_t *connection() const { return m_connection; }
    uint32_t root() const { return m_root; }
    uint32_t atom(const QByteArray &name) const;
    // A round trip: the server has handled every earlier request.
    void sync() const;

    // A mapped top-level window with this WM_CLASS.
    uint32_t createWindow(const QByteArray &instance, const QByteArray &className, QRect geometry = { 0, 0, 300, 200 });
    // Grabs the key on the root window; false when another client has it.
    bool grabKey(uint8_t keyCode, uint16_t modifiers);

    // The viewable windows whose _NET_WM_PID is pid, as rectangles on the
    // root, looking through window-manager frames.
    QList<QRect> visibleWindowsOf(qint64 pid) const;

private:
    xcb_connection_t *m_connection;
    uint32_t m_root;
};
