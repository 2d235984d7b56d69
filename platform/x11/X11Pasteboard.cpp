// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Pasteboard.h"

#include <QGuiApplication>
#include <QMimeData>

X11Pasteboard::X11Pasteboard(QObject *parent)
    : Pasteboard(parent)
    , m_clipboard(QGuiApplication::clipboard())
{
    connect(m_clipboard, &QClipboard::changed, this, &X11Pasteboard::onClipboardChanged);
    // Queued: the reader answers from its own thread.
    connect(&m_reader, &X11SelectionReader::snapshotRead, this, &X11Pasteboard::onSnapshotRead, Qt::QueuedConnection);
}

void X11Pasteboard::clearContents()
{
    m_writing = true;
    m_clipboard->clear(QClipboard::Clipboard);
    m_writing = false;
    m_reader.cancel();
    ++m_requestSerial;
    publish({});
    m_showsOwnClear = true;
}

void X11Pasteboard::write(QMimeData *data)
{
    ClipboardSnapshot snapshot = ClipboardSnapshot::fromMimeData(*data);
    m_writing = true;
    m_clipboard->setMimeData(data, QClipboard::Clipboard);
    m_writing = false;
    m_reader.cancel();
    ++m_requestSerial;
    publish(std::move(snapshot));
    m_showsOwnClear = false;
}

void X11Pasteboard::onClipboardChanged(QClipboard::Mode mode)
{
    // Our own writes are published by the writing call itself; Qt may also
    // echo one later, while we still own the selection.
    if (mode != QClipboard::Clipboard || m_writing || m_clipboard->ownsClipboard())
        return;
    m_reader.request(++m_requestSerial);
}

void X11Pasteboard::onSnapshotRead(qint64 serial, const ClipboardSnapshot &snapshot)
{
    // A later change, ours or another program's, has made it stale.
    if (serial != m_requestSerial)
        return;
    // Qt reports our own clear once more when the X server confirms it; an
    // empty clipboard after an empty clipboard is no change.
    if (m_showsOwnClear && snapshot.types.isEmpty())
        return;
    m_showsOwnClear = false;
    publish(snapshot);
}
