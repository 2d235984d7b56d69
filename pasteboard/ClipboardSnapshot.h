// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QMetaType>
#include <QStringList>

class QMimeData;

// What the clipboard held at one change, as far as capture looks at it: every
// type offered, and the bytes of the types capture reads.
struct ClipboardSnapshot {
    // MIME types and marker names, in the owner's order.
    QStringList types;
    // By type; a type offered but missing here could not be read, or was
    // larger than the capture bounds allow.
    QHash<QString, QByteArray> data;

    // What we offer when we write these formats ourselves: every format with
    // its bytes.
    static ClipboardSnapshot fromMimeData(const QMimeData &mimeData);
};

Q_DECLARE_METATYPE(ClipboardSnapshot)
