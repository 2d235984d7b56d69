// SPDX-License-Identifier: GPL-3.0-or-later
#include "OtherClient.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace {

struct FreeDeleter {
    void operator()(void *pointer) const { std::free(pointer); }
};
template<typename T> using Reply = std::unique_ptr<T, FreeDeleter>;

} // namespace

OtherClient::OtherClient()
    : m_connection(xcb_connect(nullptr, nullptr))
    , m_root(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root)
{
}

OtherClient::~OtherClient()
{
    xcb_disconnect(m_connection);
}

uint32_t OtherClient::atom(const QByteArray &name) const
{
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, false, name.size(), name.constData()), nullptr));
    return reply ? reply->atom : XCB_ATOM_NONE;
}

void OtherClient::sync() const
{
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

uint32_t OtherClient::createWindow(const QByteArray &instance, const QByteArray &className, QRect geometry)
{
    const xcb_window_t window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, int16_t(geometry.x()), int16_t(geometry.y()),
        uint16_t(geometry.width()), uint16_t(geometry.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
        0, nullptr);
    const QByteArray wmClass = instance + '\0' + className + '\0';
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
        wmClass.size(), wmClass.constData());
    xcb_map_window(m_connection, window);
    sync();
    return window;
}

bool OtherClient::grabKey(uint8_t keyCode, uint16_t modifiers)
{
    const Reply<xcb_generic_error_t> error(xcb_request_check(m_connection,
        xcb_grab_key_checked(
            m_connection, false, m_root, modifiers, keyCode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    return !error;
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
            const Reply<xcb_query_tree_reply_t> tree(
                xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, parent), nullptr));
            if (!tree)
                continue;
            const xcb_window_t *children = xcb_query_tree_children(tree.get());
            for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
                const xcb_window_t window = children[i];
                next.append(window);
                const Reply<xcb_get_property_reply_t> property(xcb_get_property_reply(m_connection,
                    xcb_get_property(m_connection, false, window, pidAtom, XCB_ATOM_CARDINAL, 0, 1), nullptr));
                if (!property || xcb_get_property_value_length(property.get()) != 4
                    || *static_cast<const uint32_t *>(xcb_get_property_value(property.get())) != pid)
                    continue;
                const Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
                    m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
                const Reply<xcb_get_geometry_reply_t> geometry(
                    xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
                const Reply<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(
                    m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
                if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE && geometry && origin)
                    found.append(QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height));
            }
        }
        pending = next;
    }
    return found;
}
