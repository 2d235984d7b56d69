// SPDX-License-Identifier: GPL-3.0-or-later
#include "TestSelectionOwner.h"

#include "XcbReply.h"

#include <QElapsedTimer>
#include <QHash>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>

namespace {

xcb_atom_t internAtom(xcb_connection_t *connection, const QByteArray &name)
{
    XcbReply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, false, name.size(), name.constData()), nullptr));
    return reply ? reply->atom : XCB_NONE;
}

} // namespace

// What toolkits send per INCR chunk.
constexpr qsizetype incrChunkBytes = 256 * 1024;

struct TestSelectionOwner::Server {
    // An INCR transfer under way.
    struct Transfer {
        xcb_window_t requestor = XCB_NONE;
        xcb_atom_t property = XCB_NONE;
        xcb_atom_t type = XCB_NONE;
        QByteArray bytes;
        qsizetype sent = 0;
        bool done = true;
    };

    void serve();
    void answer(const xcb_selection_request_event_t &request);
    void sendNextChunk();
    void notify(const xcb_selection_request_event_t &request, xcb_atom_t property);

    QList<Target> m_targets;
    Behaviour m_behaviour;
    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_window = XCB_NONE;
    xcb_atom_t m_clipboard = XCB_NONE;
    xcb_atom_t m_targetsAtom = XCB_NONE;
    // Our quit message, and the property that yields a server time.
    xcb_atom_t m_ownAtom = XCB_NONE;
    // Beside m_targets.
    QList<xcb_atom_t> m_targetAtoms;
    QHash<xcb_atom_t, QByteArray> m_names;
    xcb_atom_t m_incrAtom = XCB_NONE;
    Transfer m_transfer;

    mutable std::mutex m_mutex;
    QList<QByteArray> m_requested;

    std::chrono::steady_clock::time_point m_requestedAt;

    std::thread m_thread;
};

TestSelectionOwner::TestSelectionOwner(Offer offer, Behaviour behaviour)
    : m_server(std::make_unique<Server>())
{
    Server &s = *m_server;
    s.m_targets = std::move(offer.targets);
    s.m_behaviour = behaviour;
    s.m_connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(s.m_connection))
        return;
    s.m_clipboard = internAtom(s.m_connection, "CLIPBOARD");
    s.m_targetsAtom = internAtom(s.m_connection, "TARGETS");
    s.m_ownAtom = internAtom(s.m_connection, "ZETTLY_TEST_OWNER");
    s.m_incrAtom = internAtom(s.m_connection, "INCR");
    s.m_names.insert(s.m_targetsAtom, "TARGETS");
    for (const Target &target : std::as_const(s.m_targets)) {
        s.m_targetAtoms.append(internAtom(s.m_connection, target.name));
        s.m_names.insert(s.m_targetAtoms.last(), target.name);
    }

    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(s.m_connection)).data;
    s.m_window = xcb_generate_id(s.m_connection);
    const uint32_t eventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(s.m_connection, XCB_COPY_FROM_PARENT, s.m_window, screen->root, 0, 0, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);

    // Owners should take the selection at a real server time, not
    // CurrentTime: a property change reports one.
    xcb_change_property(s.m_connection, XCB_PROP_MODE_APPEND, s.m_window, s.m_ownAtom, XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_flush(s.m_connection);
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    while (XcbReply<xcb_generic_event_t> event { xcb_wait_for_event(s.m_connection) }) {
        if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY) {
            time = reinterpret_cast<xcb_property_notify_event_t *>(event.get())->time;
            break;
        }
    }
    xcb_set_selection_owner(s.m_connection, s.m_window, s.m_clipboard, time);
    xcb_flush(s.m_connection);
    s.m_requestedAt = std::chrono::steady_clock::now();
    s.m_thread = std::thread(&Server::serve, &s);
}

TestSelectionOwner::~TestSelectionOwner()
{
    Server &s = *m_server;
    if (s.m_thread.joinable()) {
        // Sent to our own window, it ends the wait for events.
        xcb_client_message_event_t quit {};
        quit.response_type = XCB_CLIENT_MESSAGE;
        quit.format = 32;
        quit.window = s.m_window;
        quit.type = s.m_ownAtom;
        xcb_send_event(
            s.m_connection, false, s.m_window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&quit));
        xcb_flush(s.m_connection);
        s.m_thread.join();
    }
    if (s.m_window != XCB_NONE) {
        // The server drops the selection with its owner window; the round
        // trip makes sure it has before the next test looks.
        xcb_destroy_window(s.m_connection, s.m_window);
        std::free(xcb_get_input_focus_reply(s.m_connection, xcb_get_input_focus(s.m_connection), nullptr));
    }
    xcb_disconnect(s.m_connection);
}

bool TestSelectionOwner::waitUntilOwner(int timeoutMs) const
{
    const Server &s = *m_server;
    if (s.m_window == XCB_NONE)
        return false;
    QElapsedTimer timer;
    timer.start();
    for (;;) {
        XcbReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
            s.m_connection, xcb_get_selection_owner(s.m_connection, s.m_clipboard), nullptr));
        if (owner && owner->owner == s.m_window)
            return true;
        if (!owner || timer.hasExpired(timeoutMs))
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void TestSelectionOwner::giveUp()
{
    Server &s = *m_server;
    xcb_set_selection_owner(s.m_connection, XCB_NONE, s.m_clipboard, XCB_CURRENT_TIME);
    std::free(xcb_get_input_focus_reply(s.m_connection, xcb_get_input_focus(s.m_connection), nullptr));
}

QList<QByteArray> TestSelectionOwner::requestedTargets() const
{
    std::lock_guard lock(m_server->m_mutex);
    return m_server->m_requested;
}

std::chrono::steady_clock::time_point TestSelectionOwner::ownershipRequestedAt() const
{
    return m_server->m_requestedAt;
}

void TestSelectionOwner::Server::serve()
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

void TestSelectionOwner::Server::answer(const xcb_selection_request_event_t &request)
{
    QByteArray name = m_names.value(request.target);
    if (name.isEmpty()) {
        XcbReply<xcb_get_atom_name_reply_t> reply(
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

    const qsizetype index = m_targetAtoms.indexOf(request.target);
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

void TestSelectionOwner::Server::sendNextChunk()
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

void TestSelectionOwner::Server::notify(const xcb_selection_request_event_t &request, xcb_atom_t property)
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
