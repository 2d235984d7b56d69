// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Pasteboard.h"

#include <memory>

class DataControlSession;

// The clipboard of a Wayland session, watched and written without any window
// of ours: what another program copies is read by a DataControlSession and
// published once it has arrived; what we write is served by it.
class WaylandPasteboard : public Pasteboard {
    Q_OBJECT

public:
    // Nothing when there is no Wayland compositor, or it offers no
    // data-control.
    static std::unique_ptr<WaylandPasteboard> open();
    ~WaylandPasteboard() override;

    // The data-control interface in use.
    QString protocolName() const;
    // When set, the data of a copy marked secret is not fetched at all.
    void setSkipsSecretData(bool skips);

    void clearContents() override;
    void write(QMimeData *data) override;

private:
    explicit WaylandPasteboard(std::unique_ptr<DataControlSession> session);
    void onSnapshotRead(quint64 generation, const ClipboardSnapshot &snapshot);

    std::unique_ptr<DataControlSession> m_session;
};
