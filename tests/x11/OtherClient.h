// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QRect>

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string_view>

// Another program on the test's X server, on a connection of its own: it
// makes windows, grabs keys, locks modifiers and looks at other clients'
// windows.
class OtherClient {
public:
    // What a window carries; empty values are left unset.
    struct Properties {
        std::string_view gtkApplicationId;
        std::string_view desktopFile;
        std::string_view wmClass; // "instance\0class\0"
    };

    OtherClient();
    ~OtherClient();
    OtherClient(const OtherClient &) = delete;
    OtherClient &operator=(const OtherClient &) = delete;

    xcb_connection_t *connection() const { return m_connection; }
    xcb_window_t root() const { return m_root; }
    xcb_atom_t atom(std::string_view name) const;
    // A round trip: the server has handled every earlier request.
    void sync() const;
    // Whether the server took a checked request.
    bool succeeds(xcb_void_cookie_t cookie);
    // The events and errors (as 0) queued so far, after a round trip.
    QList<uint8_t> takeEvents();

    // A mapped window, on the root unless a parent is given.
    xcb_window_t createWindow(
        const Properties &properties, xcb_window_t parent = XCB_WINDOW_NONE, QRect geometry = { 10, 10, 200, 100 });
    // A top-level one with only this WM_CLASS.
    xcb_window_t createWindow(
        const QByteArray &instance, const QByteArray &className, QRect geometry = { 0, 0, 300, 200 });
    // A window id in this property of the root, when it is there.
    std::optional<xcb_window_t> rootWindowProperty(std::string_view name) const;
    xcb_window_t inputFocus() const;
    bool setInputFocus(xcb_window_t window);
    xcb_window_t clipboardOwner() const;

    // Grabs the key on the root window; false when another client has it.
    bool grabKey(uint8_t keyCode, uint16_t modifiers);
    // Locks exactly these of the affected modifiers, and the group if given,
    // as lock keys and a layout switcher do. Returns once applied.
    bool lockModifiers(uint8_t affected, uint8_t locked, std::optional<uint8_t> group = std::nullopt);

    // Where the window really is, in root coordinates; null when gone.
    QRect rootGeometry(xcb_window_t window) const;
    bool isViewable(xcb_window_t window) const;
    // The viewable windows whose _NET_WM_PID is pid, as rectangles on the
    // root, looking through window-manager frames.
    QList<QRect> visibleWindowsOf(qint64 pid) const;

private:
    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    bool m_xkbReady = false;
};
