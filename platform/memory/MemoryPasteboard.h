// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Pasteboard.h"

// A clipboard in memory, for tests: other programs' copies are simulated with
// copy(), our own writes are kept as written.
class MemoryPasteboard : public Pasteboard {
    Q_OBJECT

public:
    using Pasteboard::Pasteboard;

    // Another program took the clipboard with these contents; only what the
    // read scope allows is read of them.
    void copy(ClipboardSnapshot snapshot);
    // Another program copied this text (text/plain).
    void copyText(const QString &text);
    // The program that offers the contents quit, leaving the clipboard
    // without an owner.
    void quitOwner();

    void clearContents() override;
    void write(QMimeData *data) override;
    bool writeIfUnowned(const std::function<void()> &write) override;
    bool hasOwner() const { return m_hasOwner; }

private:
    bool m_hasOwner = false;
};
