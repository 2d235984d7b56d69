// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QMetaType>
#include <QStringList>

class QMimeData;

// How much of another program's copy is worth reading, decided when the copy
// is announced, before anything is read.
enum class ReadScope {
    // Every type capture reads.
    Everything,
    // The markers first, then the data only if they do not call it a secret.
    UnlessMarkedSecret,
    // The list of types alone: whatever it holds will not be recorded.
    TypesOnly,
};

// What the clipboard held at one change, as far as capture looks at it: every
// type offered, and the bytes of the types capture reads.
struct ClipboardSnapshot {
    // MIME types and marker names, in the owner's order.
    QStringList types;
    // By type; a type offered but missing here could not be read, was larger
    // than the capture bounds allow, or was left unread on purpose.
    QHash<QString, QByteArray> data;
    // The clipboard is empty because the program that offered the previous
    // contents quit, not because anyone cleared it.
    bool ownerQuit = false;

    // Its writer marked it as no business of a history: concealed, transient,
    // or a password manager's hint "secret". A hint offered but not read
    // counts: better a password missing from the history than one kept.
    bool isMarkedSecret() const;
    // Drops the bytes that a reader with this scope would not have fetched.
    void limitTo(ReadScope scope);

    // What we offer when we write these formats ourselves: every format with
    // its bytes.
    static ClipboardSnapshot fromMimeData(const QMimeData &mimeData);
};

Q_DECLARE_METATYPE(ClipboardSnapshot)
