// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandPasteboard.h"

#include "DataControlSession.h"

#include <QMimeData>

std::unique_ptr<WaylandPasteboard> WaylandPasteboard::open()
{
    std::unique_ptr<DataControlSession> session = DataControlSession::open();
    if (!session)
        return nullptr;
    return std::unique_ptr<WaylandPasteboard>(new WaylandPasteboard(std::move(session)));
}

WaylandPasteboard::WaylandPasteboard(std::unique_ptr<DataControlSession> session)
    : m_session(std::move(session))
{
    // Queued: the session speaks from its own thread.
    connect(m_session.get(), &DataControlSession::selectionAnnounced, this, &WaylandPasteboard::onSelectionAnnounced,
        Qt::QueuedConnection);
    connect(m_session.get(), &DataControlSession::snapshotRead, this, &WaylandPasteboard::onSnapshotRead,
        Qt::QueuedConnection);
}

WaylandPasteboard::~WaylandPasteboard() = default;

QString WaylandPasteboard::protocolName() const
{
    return m_session->protocolName();
}

bool WaylandPasteboard::writeIfUnowned(const std::function<void()> &write)
{
    // A copy still being read has an owner, or had one a moment ago.
    if (!m_session->isCurrent(m_publishedGeneration) || !m_session->isUnowned())
        return false;
    write();
    return true;
}

void WaylandPasteboard::clearContents()
{
    publishAt(m_session->serve({}), {}, true);
}

void WaylandPasteboard::write(QMimeData *data)
{
    const std::unique_ptr<QMimeData> owned(data);
    ClipboardSnapshot snapshot = ClipboardSnapshot::fromMimeData(*owned);
    const quint64 generation = m_session->serve(snapshot);
    publishAt(generation, std::move(snapshot), true);
}

void WaylandPasteboard::onSelectionAnnounced(quint64 generation, bool empty)
{
    // A later change, ours or another program's, has made it stale.
    if (!m_session->isCurrent(generation))
        return;
    if (!empty) {
        m_session->read(generation, readScope());
        return;
    }
    // Left empty right after contents of another program's that were
    // published: that program quit.
    ClipboardSnapshot gone;
    gone.ownerQuit = m_publishedGeneration + 1 == generation && !m_showsOwn;
    publishAt(generation, std::move(gone), false);
}

void WaylandPasteboard::onSnapshotRead(quint64 generation, const ClipboardSnapshot &snapshot)
{
    if (m_session->isCurrent(generation))
        publishAt(generation, snapshot, false);
}

void WaylandPasteboard::publishAt(quint64 generation, ClipboardSnapshot snapshot, bool own)
{
    m_publishedGeneration = generation;
    m_showsOwn = own;
    publish(std::move(snapshot));
}
