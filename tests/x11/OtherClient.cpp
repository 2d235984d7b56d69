// SPDX-License-Identifier: GPL-3.0-or-later
#include "OtherClient.h"

#include "XcbReply.h"

#include "XcbXkb.h"

#include <QElapsedTimer>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

OtherClient::OtherClient()
    : m_connection(xcb_connect(nullptr, nullptr))
{
    if (!xcb_connection_has_error(m_connection))
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

OtherClient::~OtherClient()
{
    xcb_disconnect(m_connection);
}

xcb_atom_t OtherClient::atom(QByteArrayView name) const
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

QList<uint32_t> OtherClient::cardinals(xcb_window_t window, QByteArrayView property) const
{
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection,
        xcb_get_property(m_connection, false, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 64), nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto *values = static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
    return QList<uint32_t>(values, values + xcb_get_property_value_length(reply.get()) / 4);
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

QList<xcb_window_t> OtherClient::children(xcb_window_t window) const
{
    const XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
    if (!tree)
        return {};
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    return QList<xcb_window_t>(children, children + xcb_query_tree_children_length(tree.get()));
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
    QList<QRect> found;
    // Top-level windows, and the clients inside window-manager frames.
    QList<xcb_window_t> pending { m_root };
    for (int depth = 0; depth < 3 && !pending.isEmpty(); ++depth) {
        QList<xcb_window_t> next;
        for (const xcb_window_t parent : std::as_const(pending)) {
            for (const xcb_window_t window : children(parent)) {
                next.append(window);
                if (cardinals(window, "_NET_WM_PID") != QList<uint32_t> { uint32_t(pid) })
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

// What toolkits send per INCR chunk.
constexpr qsizetype incrChunkBytes = 256 * 1024;

TestSelectionOwner::TestSelectionOwner(Offer offer, Behaviour behaviour)
    : m_targets(std::move(offer.targets))
    , m_behaviour(behaviour)
{
    if (xcb_connection_has_error(m_connection))
        return;
    m_clipboard = m_client.atom("CLIPBOARD");
    m_targetsAtom = m_client.atom("TARGETS");
    m_ownAtom = m_client.atom("ZETTLY_TEST_OWNER");
    m_incrAtom = m_client.atom("INCR");
    for (const Target &target : std::as_const(m_targets))
        m_targetAtoms.append(m_client.atom(target.name));

    m_window = xcb_generate_id(m_connection);
    const uint32_t eventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, m_client.root(), 0, 0, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);

    // Owners should take the selection at a real server time, not
    // CurrentTime: a property change reports one.
    xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, m_window, m_ownAtom, XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_flush(m_connection);
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    while (XcbReply<xcb_generic_event_t> event { xcb_wait_for_event(m_connection) }) {
        if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY) {
            time = reinterpret_cast<xcb_property_notify_event_t *>(event.get())->time;
            break;
        }
    }
    xcb_set_selection_owner(m_connection, m_window, m_clipboard, time);
    xcb_flush(m_connection);
    m_requestedAt = std::chrono::steady_clock::now();
    m_thread = std::thread(&TestSelectionOwner::serve, this);
}

TestSelectionOwner::~TestSelectionOwner()
{
    if (m_thread.joinable()) {
        // Sent to our own window, it ends the wait for events.
        xcb_client_message_event_t quit {};
        quit.response_type = XCB_CLIENT_MESSAGE;
        quit.format = 32;
        quit.window = m_window;
        quit.type = m_ownAtom;
        xcb_send_event(m_connection, false, m_window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&quit));
        xcb_flush(m_connection);
        m_thread.join();
    }
    if (m_window != XCB_NONE) {
        // The server drops the selection with its owner window; the round
        // trip makes sure it has before the next test looks.
        xcb_destroy_window(m_connection, m_window);
        m_client.sync();
    }
}

bool TestSelectionOwner::waitUntilOwner(int timeoutMs) const
{
    if (m_window == XCB_NONE)
        return false;
    QElapsedTimer timer;
    timer.start();
    while (m_client.clipboardOwner() != m_window) {
        if (xcb_connection_has_error(m_connection) || timer.hasExpired(timeoutMs))
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

void TestSelectionOwner::giveUp()
{
    xcb_set_selection_owner(m_connection, XCB_NONE, m_clipboard, XCB_CURRENT_TIME);
    m_client.sync();
}

QList<QByteArray> TestSelectionOwner::requestedTargets() const
{
    std::lock_guard lock(m_mutex);
    return m_requested;
}

std::chrono::steady_clock::time_point TestSelectionOwner::ownershipRequestedAt() const
{
    return m_requestedAt;
}

void TestSelectionOwner::serve()
{
    while (XcbReply<xcb_generic_event_t> event { xcb_wait_for_event(m_connection) }) {
        const uint8_t type = event->response_type & 0x7f;
        if (type == XCB_CLIENT_MESSAGE
            && reinterpret_cast<xcb_client_message_event_t *>(event.get())->type == m_ownAtom)
            return;
        if (type == XCB_SELECTION_REQUEST)
            answer(*reinterpret_cast<xcb_selection_request_event_t *>(event.get()));
        if (type == XCB_PROPERTY_NOTIFY) {
            const auto *notify = reinterpret_cast<xcb_property_notify_event_t *>(event.get());
            // The requestor took the last chunk and asks for the next.
            if (!m_transfer.done && notify->window == m_transfer.requestor && notify->atom == m_transfer.property
                && notify->state == XCB_PROPERTY_DELETE)
                sendNextChunk();
        }
    }
}

void TestSelectionOwner::answer(const xcb_selection_request_event_t &request)
{
    const qsizetype index = m_targetAtoms.indexOf(request.target);
    QByteArray name = request.target == m_targetsAtom ? "TARGETS" : index >= 0 ? m_targets.at(index).name : "";
    if (name.isEmpty()) {
        const XcbReply<xcb_get_atom_name_reply_t> reply(
            xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, request.target), nullptr));
        if (reply)
            name = QByteArray(xcb_get_atom_name_name(reply.get()), xcb_get_atom_name_name_length(reply.get()));
    }
    {
        std::lock_guard lock(m_mutex);
        m_requested.append(name);
    }
    if (m_behaviour == Behaviour::NeverAnswers)
        return;
    // Requestors from before ICCCM 2 leave the property out.
    const xcb_atom_t property = request.property == XCB_NONE ? request.target : request.property;

    if (request.target == m_targetsAtom) {
        if (m_behaviour == Behaviour::RefusesTargets)
            return notify(request, XCB_NONE);
        const QList<xcb_atom_t> atoms = QList<xcb_atom_t> { m_targetsAtom } + m_targetAtoms;
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request.requestor, property, XCB_ATOM_ATOM, 32,
            atoms.size(), atoms.constData());
        return notify(request, property);
    }

    if (index < 0)
        return notify(request, XCB_NONE);
    const Target &target = m_targets.at(index);
    if (!target.answered)
        return;
    // Room for the ChangeProperty request's own header.
    const qint64 maxBytes = qint64(xcb_get_maximum_request_length(m_connection)) * 4 - 64;
    if (target.bytes.size() > std::min<qint64>(maxBytes, incrChunkBytes)) {
        m_transfer = { request.requestor, property, request.target, target.bytes, 0, false };
        const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(m_connection, request.requestor, XCB_CW_EVENT_MASK, &mask);
        const auto size = uint32_t(target.bytes.size());
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request.requestor, property, m_incrAtom, 32, 1, &size);
        return notify(request, property);
    }
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request.requestor, property, request.target, 8,
        target.bytes.size(), target.bytes.constData());
    notify(request, property);
}

void TestSelectionOwner::sendNextChunk()
{
    Transfer &t = m_transfer;
    const qsizetype length = std::min(incrChunkBytes, t.bytes.size() - t.sent);
    // The last, empty chunk ends the transfer.
    t.done = length == 0;
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, t.requestor, t.property, t.type, 8, uint32_t(length),
        t.bytes.constData() + t.sent);
    t.sent += length;
    if (t.done)
        t.bytes.clear();
    xcb_flush(m_connection);
}

void TestSelectionOwner::notify(const xcb_selection_request_event_t &request, xcb_atom_t property)
{
    xcb_selection_notify_event_t notify {};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = property;
    // xcb_send_event copies 32 bytes; the event struct is shorter.
    char event[32] = {};
    std::memcpy(event, &notify, sizeof notify);
    xcb_send_event(m_connection, false, request.requestor, XCB_EVENT_MASK_NO_EVENT, event);
    xcb_flush(m_connection);
}
