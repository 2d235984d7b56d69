// SPDX-License-Identifier: GPL-3.0-or-later
#include "OtherClient.h"

#include "XcbReply.h"

#include "XcbXkb.h"

#include <array>
#include <cstdlib>
#include <memory>

OtherClient::OtherClient()
    : m_connection(xcb_connect(nullptr, nullptr))
    , m_root(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root)
{
}

OtherClient::~OtherClient()
{
    xcb_disconnect(m_connection);
}

xcb_atom_t OtherClient::atom(std::string_view name) const
{
    const XcbReply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, false, name.size(), name.data()), nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

void OtherClient::sync() const
{
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

QList<uint8_t> OtherClient::takeEvents()
{
    sync();
    QList<uint8_t> types;
    while (const XcbReply<xcb_generic_event_t> event { xcb_poll_for_event(m_connection) })
        types.append(event->response_type & ~0x80);
    return types;
}

bool OtherClient::succeeds(xcb_void_cookie_t cookie)
{
    return !XcbReply<xcb_generic_error_t>(xcb_request_check(m_connection, cookie));
}

xcb_window_t OtherClient::createWindow(const Properties &properties, xcb_window_t parent, QRect geometry)
{
    const xcb_window_t window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, parent ? parent : m_root, int16_t(geometry.x()),
        int16_t(geometry.y()), uint16_t(geometry.width()), uint16_t(geometry.height()), 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const auto setText = [&](xcb_atom_t property, xcb_atom_t type, std::string_view value) {
        if (!value.empty())
            xcb_change_property(
                m_connection, XCB_PROP_MODE_REPLACE, window, property, type, 8, value.size(), value.data());
    };
    const xcb_atom_t utf8 = atom("UTF8_STRING");
    setText(atom("_GTK_APPLICATION_ID"), utf8, properties.gtkApplicationId);
    setText(atom("_KDE_NET_WM_DESKTOP_FILE"), utf8, properties.desktopFile);
    setText(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, properties.wmClass);
    // WM_NORMAL_HINTS with "user-specified position and size": a window
    // manager places it where asked.
    std::array<uint32_t, 18> sizeHints {};
    sizeHints[0] = 1 | 2;
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
        32, sizeHints.size(), sizeHints.data());
    xcb_map_window(m_connection, window);
    sync();
    return window;
}

xcb_window_t OtherClient::createWindow(const QByteArray &instance, const QByteArray &className, QRect geometry)
{
    const QByteArray wmClass = instance + '\0' + className + '\0';
    return createWindow({ {}, {}, std::string_view(wmClass.constData(), wmClass.size()) }, XCB_WINDOW_NONE, geometry);
}

std::optional<xcb_window_t> OtherClient::rootWindowProperty(std::string_view name) const
{
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, false, m_root, atom(name), XCB_ATOM_WINDOW, 0, 1), nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) != 4)
        return std::nullopt;
    return *static_cast<const xcb_window_t *>(xcb_get_property_value(reply.get()));
}

xcb_window_t OtherClient::inputFocus() const
{
    const XcbReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return reply ? reply->focus : xcb_window_t(XCB_WINDOW_NONE);
}

bool OtherClient::setInputFocus(xcb_window_t window)
{
    return succeeds(xcb_set_input_focus_checked(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME));
}

xcb_window_t OtherClient::clipboardOwner() const
{
    const xcb_atom_t clipboard = atom("CLIPBOARD");
    if (clipboard == XCB_ATOM_NONE)
        return XCB_NONE;
    const XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, clipboard), nullptr));
    return owner ? owner->owner : XCB_NONE;
}

bool OtherClient::grabKey(uint8_t keyCode, uint16_t modifiers)
{
    return succeeds(xcb_grab_key_checked(
        m_connection, false, m_root, modifiers, keyCode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
}

bool OtherClient::lockModifiers(uint8_t affected, uint8_t locked, std::optional<uint8_t> group)
{
    // The server takes no XKB request before this one.
    if (!m_xkbReady) {
        const XcbReply<xcb_xkb_use_extension_reply_t> use(
            xcb_xkb_use_extension_reply(m_connection, xcb_xkb_use_extension(m_connection, 1, 0), nullptr));
        m_xkbReady = use && use->supported;
    }
    return m_xkbReady
        && succeeds(xcb_xkb_latch_lock_state_checked(m_connection, XCB_XKB_ID_USE_CORE_KBD, affected, locked,
            group.has_value(), group.value_or(0), 0, false, 0));
}

QRect OtherClient::rootGeometry(xcb_window_t window) const
{
    const XcbReply<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
    const XcbReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    if (!origin || !geometry)
        return {};
    return { origin->dst_x, origin->dst_y, geometry->width, geometry->height };
}

bool OtherClient::isViewable(xcb_window_t window) const
{
    const XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

QList<QRect> OtherClient::visibleWindowsOf(qint64 pid) const
{
    const xcb_atom_t pidAtom = atom("_NET_WM_PID");
    QList<QRect> found;
    // Top-level windows, and the clients inside window-manager frames.
    QList<xcb_window_t> pending { m_root };
    for (int depth = 0; depth < 3 && !pending.isEmpty(); ++depth) {
        QList<xcb_window_t> next;
        for (const xcb_window_t parent : std::as_const(pending)) {
            const XcbReply<xcb_query_tree_reply_t> tree(
                xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, parent), nullptr));
            if (!tree)
                continue;
            const xcb_window_t *children = xcb_query_tree_children(tree.get());
            for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
                const xcb_window_t window = children[i];
                next.append(window);
                const XcbReply<xcb_get_property_reply_t> property(xcb_get_property_reply(m_connection,
                    xcb_get_property(m_connection, false, window, pidAtom, XCB_ATOM_CARDINAL, 0, 1), nullptr));
                if (!property || xcb_get_property_value_length(property.get()) != 4
                    || *static_cast<const uint32_t *>(xcb_get_property_value(property.get())) != pid)
                    continue;
                // X has no empty windows: a null rectangle is a window gone.
                const QRect geometry = rootGeometry(window);
                if (isViewable(window) && !geometry.isNull())
                    found.append(geometry);
            }
        }
        pending = next;
    }
    return found;
}
