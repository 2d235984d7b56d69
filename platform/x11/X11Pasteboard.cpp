// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Pasteboard.h"

#include "X11Display.h"
#include "XcbReply.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMimeData>

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

X11Pasteboard::X11Pasteboard(QObject *parent)
    : Pasteboard(parent)
    , m_clipboard(QGuiApplication::clipboard())
{
    // Queued: the reader answers from its own thread.
    connect(&m_reader, &X11SelectionReader::snapshotRead, this, &X11Pasteboard::onSnapshotRead, Qt::QueuedConnection);

    // Qt already asks XFixes for the owner's comings and goings on its own
    // connection; its events pass through the native filters first. They
    // are read here rather than through QClipboard::changed: Qt drops a
    // change stamped with the same server time as its own last write, and
    // then takes itself for the owner until it writes again.
    if (xcb_connection_t *connection = X11Display::qtConnection()) {
        const xcb_setup_t *setup = xcb_get_setup(connection);
        m_ownIdBase = setup->resource_id_base;
        m_ownIdMask = setup->resource_id_mask;
        const xcb_query_extension_reply_t *xfixes = xcb_get_extension_data(connection, &xcb_xfixes_id);
        XcbReply<xcb_intern_atom_reply_t> clipboard(
            xcb_intern_atom_reply(connection, xcb_intern_atom(connection, false, 9, "CLIPBOARD"), nullptr));
        if (xfixes && xfixes->present && clipboard) {
            m_xfixesEventBase = xfixes->first_event;
            m_clipboardAtom = clipboard->atom;
            QCoreApplication::instance()->installNativeEventFilter(this);
        }
    }
}

X11Pasteboard::~X11Pasteboard()
{
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool X11Pasteboard::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) != m_xfixesEventBase + XCB_XFIXES_SELECTION_NOTIFY)
        return false;
    const auto *notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t *>(event);
    if (notify->selection != m_clipboardAtom)
        return false;
    // Our own writes and clears are published by the writing call itself.
    if (notify->owner == XCB_NONE && notify->subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER
        && m_ownClearsPending > 0) {
        --m_ownClearsPending;
        return false;
    }
    if (notify->owner == XCB_NONE || (notify->owner & ~m_ownIdMask) != m_ownIdBase) {
        onOwnerChanged(notify->subtype == XCB_XFIXES_SELECTION_EVENT_SELECTION_WINDOW_DESTROY
            || notify->subtype == XCB_XFIXES_SELECTION_EVENT_SELECTION_CLIENT_CLOSE);
    }
    return false;
}

bool X11Pasteboard::writeIfUnowned(const std::function<void()> &write)
{
    // A copy still being read has an owner, or had one a moment ago.
    xcb_connection_t *connection = X11Display::qtConnection();
    if (m_publishedSerial != m_requestSerial || !connection || !m_clipboardAtom)
        return false;
    // X has no compare-and-set for the owner: with the server grabbed, no
    // other program's request runs between the check and Qt's write, which
    // goes over this same connection.
    xcb_grab_server(connection);
    XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, m_clipboardAtom), nullptr));
    const bool unowned = owner && owner->owner == XCB_NONE;
    if (unowned)
        write();
    xcb_ungrab_server(connection);
    xcb_flush(connection);
    return unowned;
}

void X11Pasteboard::clearContents()
{
    // Qt gives up a selection that has an owner, and then only.
    if (xcb_connection_t *connection = X11Display::qtConnection()) {
        const XcbReply<xcb_get_selection_owner_reply_t> owner(
            xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, m_clipboardAtom), nullptr));
        if (owner && owner->owner != XCB_NONE)
            ++m_ownClearsPending;
    }
    m_clipboard->clear(QClipboard::Clipboard);
    publishOwn({});
    m_showsOwnClear = true;
}

void X11Pasteboard::write(QMimeData *data)
{
    ClipboardSnapshot snapshot = ClipboardSnapshot::fromMimeData(*data);
    m_clipboard->setMimeData(data, QClipboard::Clipboard);
    publishOwn(std::move(snapshot));
    m_showsOwnClear = false;
}

void X11Pasteboard::publishOwn(ClipboardSnapshot snapshot)
{
    m_reader.cancel();
    m_publishedSerial = ++m_requestSerial;
    publish(std::move(snapshot));
}

void X11Pasteboard::onOwnerChanged(bool ownerQuit)
{
    if (ownerQuit) {
        // Nothing is left to read. Only when the owner that quit is the one
        // whose contents were published does the change say so: one still
        // being read was never seen.
        const bool wasPublished = m_publishedSerial == m_requestSerial;
        m_reader.cancel();
        m_publishedSerial = ++m_requestSerial;
        ClipboardSnapshot gone;
        gone.ownerQuit = wasPublished && !m_showsOwnClear;
        m_showsOwnClear = false;
        publish(std::move(gone));
        return;
    }
    m_reader.request(++m_requestSerial, readScope());
}

void X11Pasteboard::onSnapshotRead(qint64 serial, const ClipboardSnapshot &snapshot)
{
    // A later change, ours or another program's, has made it stale.
    if (serial != m_requestSerial)
        return;
    m_publishedSerial = serial;
    // Qt reports our own clear once more when the X server confirms it; an
    // empty clipboard after an empty clipboard is no change.
    if (m_showsOwnClear && snapshot.types.isEmpty())
        return;
    m_showsOwnClear = false;
    publish(snapshot);
}
