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
    // Queued: the session answers from its own thread.
    connect(m_session.get(), &DataControlSession::snapshotRead, this, &WaylandPasteboard::onSnapshotRead,
        Qt::QueuedConnection);
}

WaylandPasteboard::~WaylandPasteboard() = default;

QString WaylandPasteboard::protocolName() const
{
    return m_session->protocolName();
}

void WaylandPasteboard::setSkipsSecretData(bool skips)
{
    m_session->setSkipsSecretData(skips);
}

void WaylandPasteboard::clearContents()
{
    m_session->serve({});
    publish({});
}

void WaylandPasteboard::write(QMimeData *data)
{
    const std::unique_ptr<QMimeData> owned(data);
    ClipboardSnapshot snapshot = ClipboardSnapshot::fromMimeData(*owned);
    m_session->serve(snapshot);
    publish(std::move(snapshot));
}

void WaylandPasteboard::onSnapshotRead(quint64 generation, const ClipboardSnapshot &snapshot)
{
    // A later change, ours or another program's, has made it stale.
    if (m_session->isCurrent(generation))
        publish(snapshot);
}
