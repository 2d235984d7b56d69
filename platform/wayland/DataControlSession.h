// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipboardSnapshot.h"

#include <QObject>

#include <memory>

// The clipboard of a Wayland session through the compositor's data-control
// protocol (ext-data-control-v1, else zwlr-data-control-unstable-v1), on a
// connection and a thread of its own: a program that answers slowly, or
// never, cannot stall the main thread.
//
// Each new selection of another program is announced, then read when asked,
// markers first, then the types capture takes, each through a pipe bounded by
// answerTimeoutMs and CaptureLimits; a newer selection or a write of ours
// abandons the read.
class DataControlSession : public QObject {
    Q_OBJECT

public:
    // The thread and its connection; one kind per protocol.
    struct Worker;

    // How long one type's transfer may take before the read gives up.
    static constexpr int answerTimeoutMs = 500;

    // Connects to $WAYLAND_DISPLAY; nothing when there is no compositor or it
    // offers no data-control. The selection there at the start is not read.
    static std::unique_ptr<DataControlSession> open();
    ~DataControlSession() override;

    // The data-control interface in use.
    QString protocolName() const;

    // Reads the selection announced at generation, as far as scope says, if
    // it is still the clipboard's contents. Any thread.
    void read(quint64 generation, ReadScope scope);

    // Makes these formats the selection, served by us until another program
    // takes it; no types clears it. Abandons the read in progress and any
    // answer not yet taken. Any thread. Returns the generation of these
    // contents.
    quint64 serve(const ClipboardSnapshot &snapshot);

    // Whether an announced generation is still the clipboard's contents.
    bool isCurrent(quint64 generation) const;
    // No program offers anything, as far as the compositor last said.
    bool isUnowned() const;

Q_SIGNALS:
    // Another program took the clipboard, or left it empty. Sent from the
    // session's thread.
    void selectionAnnounced(quint64 generation, bool empty);
    // Another program's selection, as far as it could be read. Sent from the
    // session's thread.
    void snapshotRead(quint64 generation, const ClipboardSnapshot &snapshot);

private:
    explicit DataControlSession(std::unique_ptr<Worker> worker);

    std::unique_ptr<Worker> m_worker;
};
