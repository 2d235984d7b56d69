// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Workspace.h"

#include "X11Display.h"
#include "XcbReply.h"

#include <QGuiApplication>
#include <QList>
#include <QScreen>
#include <QString>

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>

namespace {

// Identifiers and class names are short; this bounds what a hostile window
// can make us read.
constexpr uint32_t maxPropertyWords = 256;
// Reparenting managers put the client one or two levels below the frame.
constexpr int maxClientDepth = 3;
constexpr int maxTreeWalk = 64;

// _NET_ACTIVE_WINDOW source indication for pagers and similar tools: window
// managers honour it without their focus-stealing prevention.
constexpr uint32_t sourceIndicationPager = 2;

xcb_get_property_cookie_t requestProperty(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t property)
{
    return xcb_get_property(connection, false, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, maxPropertyWords);
}

// A single window id held in a property; nullopt when the property is absent.
std::optional<xcb_window_t> windowValue(xcb_connection_t *connection, xcb_get_property_cookie_t cookie)
{
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
        return std::nullopt;
    return *static_cast<const xcb_window_t *>(xcb_get_property_value(reply.get()));
}

// The strings of a text property (NUL-separated, as WM_CLASS). STRING is
// Latin-1; the desktop-entry ids come as UTF8_STRING.
QStringList textValues(const xcb_get_property_reply_t *reply)
{
    if (!reply || reply->type == XCB_ATOM_NONE || reply->format != 8)
        return {};
    const QByteArray bytes(
        static_cast<const char *>(xcb_get_property_value(reply)), xcb_get_property_value_length(reply));
    QStringList values;
    for (const QByteArray &part : bytes.split('\0'))
        values.append(reply->type == XCB_ATOM_STRING ? QString::fromLatin1(part) : QString::fromUtf8(part));
    return values;
}

} // namespace

X11Workspace::X11Workspace()
    : X11Workspace(X11Display::qtConnection())
{
}

X11Workspace::X11Workspace(xcb_connection_t *connection)
    : m_connection(connection)
{
    if (!m_connection || xcb_connection_has_error(m_connection))
        return;
    const xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    if (!screen.rem)
        return;

    // XWayland names its outputs XWAYLAND0, XWAYLAND1...; the extension of
    // that name comes only with later versions.
    const QList<QScreen *> screens = QGuiApplication::screens();
    m_xwayland = std::any_of(screens.cbegin(), screens.cend(),
        [](const QScreen *screen) { return screen->name().startsWith(QLatin1StringView("XWAYLAND")); });

    // The compositor selection is per screen; like the rest of this class,
    // it takes the first screen as the one.
    const std::array names = { "_NET_ACTIVE_WINDOW", "_NET_SUPPORTING_WM_CHECK", "_GTK_APPLICATION_ID",
        "_KDE_NET_WM_DESKTOP_FILE", "_NET_WM_CM_S0", "_NET_WM_DESKTOP", "_NET_WM_STATE", "_NET_WM_STATE_STICKY",
        "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER" };
    std::array<xcb_intern_atom_cookie_t, names.size()> cookies {};
    for (size_t i = 0; i < names.size(); ++i)
        cookies[i] = xcb_intern_atom(m_connection, false, qstrlen(names[i]), names[i]);
    std::array<xcb_atom_t, names.size()> atoms {};
    for (size_t i = 0; i < names.size(); ++i) {
        const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookies[i], nullptr));
        if (!reply)
            return;
        atoms[i] = reply->atom;
    }
    m_netActiveWindow = atoms[0];
    m_netSupportingWmCheck = atoms[1];
    m_gtkApplicationId = atoms[2];
    m_kdeDesktopFile = atoms[3];
    m_compositorSelection = atoms[4];
    m_netWmDesktop = atoms[5];
    m_netWmState = atoms[6];
    m_netWmStateSticky = atoms[7];
    m_netWmStateSkipTaskbar = atoms[8];
    m_netWmStateSkipPager = atoms[9];
    // Set last: a zero root marks a workspace that could not start.
    m_root = screen.data->root;
}

std::optional<RunningApp> X11Workspace::frontmostApp() const
{
    if (!m_root)
        return std::nullopt;
    const std::optional<quint32> window = hasEwmhManager() ? activeWindow() : focusedClient();
    if (!window)
        return std::nullopt;
    return identify(*window);
}

void X11Workspace::activate(const RunningApp &app)
{
    if (!m_root || !app.windowId || app.windowId > std::numeric_limits<xcb_window_t>::max())
        return;
    const auto window = static_cast<xcb_window_t>(app.windowId);
    // Activating a window that has gone raises BadWindow.
    const XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    if (!attributes)
        return;

    // A window the manager does not manage (override-redirect) is ours to
    // focus: the manager would ignore the request.
    if (!attributes->override_redirect && hasEwmhManager()) {
        xcb_client_message_event_t event {};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = m_netActiveWindow;
        event.data.data32[0] = sourceIndicationPager;
        event.data.data32[1] = XCB_CURRENT_TIME;
        event.data.data32[2] = XCB_WINDOW_NONE;
        xcb_send_event(m_connection, false, m_root,
            XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
            reinterpret_cast<const char *>(&event));
        xcb_flush(m_connection);
        return;
    }

    // Checked, and the errors dropped: the window may still vanish, or be
    // unmapped, which makes focusing it a BadMatch.
    const uint32_t above = XCB_STACK_MODE_ABOVE;
    const xcb_void_cookie_t raised
        = xcb_configure_window_checked(m_connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    const xcb_void_cookie_t focused
        = xcb_set_input_focus_checked(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    std::free(xcb_request_check(m_connection, raised));
    std::free(xcb_request_check(m_connection, focused));
}

bool X11Workspace::hasCompositor() const
{
    if (!m_root)
        return false;
    const XcbReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, m_compositorSelection), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

bool X11Workspace::focusIsNowhere() const
{
    if (!m_root)
        return false;
    const XcbReply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    // PointerRoot sends the keys to whatever lies under the pointer: no
    // window is in front for the user.
    return focus
        && (focus->focus == XCB_WINDOW_NONE || focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT || focus->focus == m_root);
}

void X11Workspace::prepareFloatingPanel(quint64 windowId)
{
    if (!m_root || !windowId || windowId > std::numeric_limits<xcb_window_t>::max())
        return;
    const auto window = static_cast<xcb_window_t>(windowId);
    const XcbReply<xcb_get_property_reply_t> current(xcb_get_property_reply(m_connection,
        xcb_get_property(m_connection, false, window, m_netWmState, XCB_ATOM_ATOM, 0, maxPropertyWords), nullptr));
    // No reply: the window has gone.
    if (!current)
        return;

    QList<xcb_atom_t> states;
    if (current->type == XCB_ATOM_ATOM && current->format == 32) {
        const auto *values = static_cast<const xcb_atom_t *>(xcb_get_property_value(current.get()));
        const int count = xcb_get_property_value_length(current.get()) / 4;
        states = QList<xcb_atom_t>(values, values + count);
    }
    for (const xcb_atom_t state : { m_netWmStateSticky, m_netWmStateSkipTaskbar, m_netWmStateSkipPager }) {
        if (!states.contains(state))
            states.append(state);
    }
    const uint32_t allDesktops = 0xFFFFFFFF;
    // Checked, and the errors dropped: the window may vanish meanwhile.
    const xcb_void_cookie_t stateSet = xcb_change_property_checked(m_connection, XCB_PROP_MODE_REPLACE, window,
        m_netWmState, XCB_ATOM_ATOM, 32, uint32_t(states.size()), states.constData());
    const xcb_void_cookie_t desktopSet = xcb_change_property_checked(
        m_connection, XCB_PROP_MODE_REPLACE, window, m_netWmDesktop, XCB_ATOM_CARDINAL, 32, 1, &allDesktops);
    std::free(xcb_request_check(m_connection, stateSet));
    std::free(xcb_request_check(m_connection, desktopSet));
}

bool X11Workspace::hasEwmhManager() const
{
    const std::optional<xcb_window_t> check
        = windowValue(m_connection, requestProperty(m_connection, m_root, m_netSupportingWmCheck));
    if (!check || !*check)
        return false;
    // A manager that died leaves the root property behind; its check window
    // then no longer exists or no longer points at itself.
    return windowValue(m_connection, requestProperty(m_connection, *check, m_netSupportingWmCheck)) == check;
}

std::optional<quint32> X11Workspace::activeWindow() const
{
    const std::optional<xcb_window_t> active
        = windowValue(m_connection, requestProperty(m_connection, m_root, m_netActiveWindow));
    if (!active || *active == XCB_WINDOW_NONE)
        return std::nullopt;
    return *active;
}

std::optional<quint32> X11Workspace::focusedClient() const
{
    const XcbReply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    if (!focus || focus->focus == XCB_WINDOW_NONE || focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT
        || focus->focus == m_root)
        return std::nullopt;
    const std::optional<quint32> topLevel = topLevelOf(focus->focus);
    if (!topLevel)
        return std::nullopt;
    return clientOf(*topLevel);
}

std::optional<quint32> X11Workspace::topLevelOf(quint32 window) const
{
    for (int step = 0; step < maxTreeWalk; ++step) {
        const XcbReply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
        if (!tree)
            return std::nullopt;
        if (tree->parent == m_root || tree->parent == XCB_WINDOW_NONE)
            return window;
        window = tree->parent;
    }
    return std::nullopt;
}

// The window manager's frame carries no WM_CLASS; the client inside does.
quint32 X11Workspace::clientOf(quint32 topLevel) const
{
    QList<quint32> level { topLevel };
    for (int depth = 0; depth <= maxClientDepth && !level.isEmpty(); ++depth) {
        QList<quint32> next;
        for (const quint32 window : std::as_const(level)) {
            if (hasWmClass(window))
                return window;
            const XcbReply<xcb_query_tree_reply_t> tree(
                xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
            if (!tree)
                continue;
            const xcb_window_t *children = xcb_query_tree_children(tree.get());
            const int count = xcb_query_tree_children_length(tree.get());
            for (int i = 0; i < count && next.size() < maxTreeWalk; ++i)
                next.append(children[i]);
        }
        level = std::move(next);
    }
    return topLevel;
}

bool X11Workspace::hasWmClass(quint32 window) const
{
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection,
        xcb_get_property(m_connection, false, window, XCB_ATOM_WM_CLASS, XCB_GET_PROPERTY_TYPE_ANY, 0, 0), nullptr));
    return reply && reply->type != XCB_ATOM_NONE;
}

std::optional<RunningApp> X11Workspace::identify(quint32 window) const
{
    if (isOwn(window))
        return RunningApp { window, ownIdentifier };
    // All three asked at once: one round trip.
    const xcb_get_property_cookie_t gtkCookie = requestProperty(m_connection, window, m_gtkApplicationId);
    const xcb_get_property_cookie_t kdeCookie = requestProperty(m_connection, window, m_kdeDesktopFile);
    const xcb_get_property_cookie_t classCookie = requestProperty(m_connection, window, XCB_ATOM_WM_CLASS);
    const XcbReply<xcb_get_property_reply_t> gtk(xcb_get_property_reply(m_connection, gtkCookie, nullptr));
    const XcbReply<xcb_get_property_reply_t> kde(xcb_get_property_reply(m_connection, kdeCookie, nullptr));
    const XcbReply<xcb_get_property_reply_t> wmClass(xcb_get_property_reply(m_connection, classCookie, nullptr));
    // No reply: the window has gone since we learnt its id.
    if (!gtk || !kde || !wmClass)
        return std::nullopt;

    RunningApp app { window, std::nullopt };
    const QStringList gtkId = textValues(gtk.get());
    const QStringList desktopFile = textValues(kde.get());
    const QStringList classes = textValues(wmClass.get());
    if (!gtkId.isEmpty() && !gtkId.first().isEmpty()) {
        app.identifier = gtkId.first();
    } else if (!desktopFile.isEmpty() && !desktopFile.first().isEmpty()) {
        QString id = desktopFile.first();
        if (id.endsWith(QLatin1String(".desktop")))
            id.chop(qsizetype(sizeof(".desktop") - 1));
        app.identifier = id;
    } else if (classes.size() > 1 && !classes.at(1).isEmpty()) {
        app.identifier = classes.at(1);
    }
    return app;
}

bool X11Workspace::isOwn(quint32 window) const
{
    const xcb_setup_t *setup = xcb_get_setup(m_connection);
    return (window & ~setup->resource_id_mask) == setup->resource_id_base;
}
