// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Pasteboard.h"

#include <memory>

class DataControlSession;

// The clipboard of a Wayland session, watched and written without any window
// of ours: what another program copies is read by a DataControlSession, as far
// as the read scope says, and published once it has arrived; what we write is
// served by it.
class WaylandPasteboard : public Pasteboard {
    Q_OBJECT

public:
    // Nothing when there is no Wayland compositor, or it offers no
    // data-control.
    static std::unique_ptr<WaylandPasteboard> open();
    ~WaylandPasteboard() override;

    // The data-control interface in use.
    QString protocolName() const;

    // Wayland has no compare-and-set for the clipboard: the check and the
    // write are as close as the compositor's last word allows.
    bool writeIfUnowned(const std::function<void()> &write) override;
    void clearContents() override;
    void write(QMimeData *data) override;

private:
    explicit WaylandPasteboard(std::unique_ptr<DataControlSession> session);
    void onSelectionAnnounced(quint64 generation, bool empty);
    void onSnapshotRead(quint64 generation, const ClipboardSnapshot &snapshot);
    void publishAt(quint64 generation, ClipboardSnapshot snapshot, bool own);

    std::unique_ptr<DataControlSession> m_session;
    // The generation whose contents are published.
    quint64 m_publishedGeneration = 0;
    // The published contents are our own write or clear.
    bool m_showsOwn = false;
};
