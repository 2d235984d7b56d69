// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Pasteboard.h"
#include "X11SelectionReader.h"

#include <QAbstractNativeEventFilter>
#include <QClipboard>

// The X11 CLIPBOARD selection. XFixes tells of each change of owner, and Qt
// serves what we write to every client that asks, for as long as we own the
// selection; other programs' data is read by an X11SelectionReader, off the
// main thread, and published once it has arrived. The same XFixes events tell
// an owner that quit from one that cleared the clipboard.
class X11Pasteboard : public Pasteboard, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    // Needs a QGuiApplication on the xcb platform.
    explicit X11Pasteboard(QObject *parent = nullptr);
    ~X11Pasteboard() override;

    void clearContents() override;
    void write(QMimeData *data) override;
    bool writeIfUnowned(const std::function<void()> &write) override;

private:
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    // Another program took the clipboard, cleared it, or quit owning it.
    void onOwnerChanged(bool ownerQuit);
    void onSnapshotRead(qint64 serial, const ClipboardSnapshot &snapshot);
    void publishOwn(ClipboardSnapshot snapshot);

    QClipboard *m_clipboard;
    X11SelectionReader m_reader;
    // The request whose answer is awaited; older answers are stale.
    qint64 m_requestSerial = 0;
    // The request whose contents are published; behind m_requestSerial while
    // a read is under way.
    qint64 m_publishedSerial = 0;
    // The published contents are our own clear.
    bool m_showsOwnClear = false;
    // Our clears whose XFixes report is still to come.
    int m_ownClearsPending = 0;
    // Our windows' ids, Qt's selection owner among them.
    quint32 m_ownIdBase = 0;
    quint32 m_ownIdMask = 0;
    // Zero without XFixes.
    uint8_t m_xfixesEventBase = 0;
    quint32 m_clipboardAtom = 0;
};
