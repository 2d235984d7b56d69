// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipboardSnapshot.h"

#include <QObject>

#include <memory>

// Reads another program's CLIPBOARD selection on a thread and an X
// connection of its own, so that an owner that answers slowly, or never,
// cannot stall the main thread. Each wait for the owner is bounded, and a new
// request abandons the read in progress at once.
//
// A snapshot lists the offered targets as MIME types: the X text targets
// (UTF8_STRING, STRING, text/plain;charset=utf-8, …) become one text/plain,
// read as UTF-8; protocol targets (TARGETS, TIMESTAMP, MULTIPLE, …) are left
// out; marker names stay as they are. Of the types capture reads, each offered
// one is transferred, INCR included, up to CaptureLimits::maxBytes, the
// markers first; image/tiff only when the PNG is missing or does not decode;
// the file manager's list only without text/uri-list, the browser's link only
// without text/uri-list and text. A read scope may leave data unread.
class X11SelectionReader : public QObject {
    Q_OBJECT

public:
    // How long one answer of the owner may take before the read gives up.
    static constexpr int answerTimeoutMs = 500;

    // Connects to displayName ($DISPLAY when empty) and starts the thread.
    explicit X11SelectionReader(const QByteArray &displayName = {}, QObject *parent = nullptr);
    // Abandons any read and joins the thread.
    ~X11SelectionReader() override;

    // False when the X server could not be reached; requests then go
    // unanswered.
    bool isValid() const;

    // Reads the clipboard as it is now, as far as scope allows, abandoning an
    // older request. Any thread.
    void request(qint64 serial, ReadScope scope = ReadScope::Everything);
    // Abandons the request in progress, if any, unanswered. Any thread.
    void cancel();

Q_SIGNALS:
    // The answer to request(serial). Sent from the reader's thread; an owner
    // that went away or never answered gives a snapshot with what could be
    // read, possibly nothing.
    void snapshotRead(qint64 serial, const ClipboardSnapshot &snapshot);

private:
    struct Worker;
    std::unique_ptr<Worker> m_worker;
};
