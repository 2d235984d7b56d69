// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DesktopWindows.h"
#include "Workspace.h"

struct xcb_connection_t;

// The desktop's windows through EWMH: the active window is
// _NET_ACTIVE_WINDOW, or, without a window manager that sets it, the
// top-level window holding the input focus. An application is identified by
// its desktop-entry id (_GTK_APPLICATION_ID, _KDE_NET_WM_DESKTOP_FILE) when
// the window carries one, else by its WM_CLASS class; windows of this process
// identify as Workspace::ownIdentifier. Also serves the picker's requests on
// its panel window, which need the same EWMH look-ups.
class X11Workspace : public Workspace, public DesktopWindows {
public:
    // Uses Qt's connection: needs a QGuiApplication on the xcb platform.
    X11Workspace();
    // Uses a connection owned by someone else, which must outlive this
    // object. Windows created on it count as our own.
    explicit X11Workspace(xcb_connection_t *connection);

    std::optional<RunningApp> frontmostApp() const override;
    void activate(const RunningApp &app) override;
    // A compositing manager owns _NET_WM_CM_S0.
    bool hasCompositor() const override;
    bool focusIsNowhere() const override;
    // Not on XWayland, whatever backends the session has otherwise.
    bool takesUnmanagedPanels() const override { return !m_xwayland; }
    // _NET_WM_DESKTOP on all desktops, and _NET_WM_STATE sticky, skip
    // taskbar and skip pager added to what the window has.
    void prepareFloatingPanel(quint64 windowId) override;

private:
    // xcb window and atom ids are 32-bit; xcb headers stay out of here.
    bool hasEwmhManager() const;
    std::optional<quint32> activeWindow() const;
    std::optional<quint32> focusedClient() const;
    std::optional<quint32> topLevelOf(quint32 window) const;
    quint32 clientOf(quint32 topLevel) const;
    bool hasWmClass(quint32 window) const;
    std::optional<RunningApp> identify(quint32 window) const;
    bool isOwn(quint32 window) const;

    xcb_connection_t *m_connection = nullptr;
    quint32 m_root = 0;
    quint32 m_netActiveWindow = 0;
    quint32 m_netSupportingWmCheck = 0;
    quint32 m_gtkApplicationId = 0;
    quint32 m_kdeDesktopFile = 0;
    quint32 m_compositorSelection = 0;
    bool m_xwayland = false;
    quint32 m_netWmDesktop = 0;
    quint32 m_netWmState = 0;
    quint32 m_netWmStateSticky = 0;
    quint32 m_netWmStateSkipTaskbar = 0;
    quint32 m_netWmStateSkipPager = 0;
};
