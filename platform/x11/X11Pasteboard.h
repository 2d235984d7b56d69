// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Pasteboard.h"
#include "X11SelectionReader.h"

#include <QClipboard>

// The X11 CLIPBOARD selection. Qt tells of each change of owner (XFixes) and
// serves what we write to every client that asks, for as long as we own the
// selection; other programs' data is read by an X11SelectionReader, off the
// main thread, and published once it has arrived.
class X11Pasteboard : public Pasteboard {
    Q_OBJECT

public:
    // Needs a QGuiApplication on the xcb platform.
    explicit X11Pasteboard(QObject *parent = nullptr);

    void clearContents() override;
    void write(QMimeData *data) override;

private:
    void onClipboardChanged(QClipboard::Mode mode);
    void onSnapshotRead(qint64 serial, const ClipboardSnapshot &snapshot);

    QClipboard *m_clipboard;
    X11SelectionReader m_reader;
    // The request whose answer is awaited; older answers are stale.
    qint64 m_requestSerial = 0;
    // Set while Qt reports our own write.
    bool m_writing = false;
    // The published contents are our own clear.
    bool m_showsOwnClear = false;
};
