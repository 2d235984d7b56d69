// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardSnapshot.h"

#include <QMimeData>

ClipboardSnapshot ClipboardSnapshot::fromMimeData(const QMimeData &mimeData)
{
    ClipboardSnapshot snapshot;
    snapshot.types = mimeData.formats();
    // Our own bytes are at hand: keep every format, not only those capture
    // reads.
    for (const QString &type : std::as_const(snapshot.types))
        snapshot.data.insert(type, mimeData.data(type));
    return snapshot;
}
