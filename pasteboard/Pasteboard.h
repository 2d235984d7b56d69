// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QObject>
#include <QStringList>

#include <optional>

class QMimeData;

// The system clipboard as the watcher and paste-back see it. Reads never
// block: an implementation that must ask another program for the data does
// so beforehand and serves what it received for the current change count.
class Pasteboard : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Moves on every change of the clipboard's contents, our own writes and
    // clearing included. Never moves back.
    virtual qint64 changeCount() const = 0;
    // The MIME types offered for the current change, in the owner's order.
    virtual QStringList types() const = 0;
    // The bytes of one type, or nothing when the type is not offered, could
    // not be read, or was larger than the capture bounds.
    virtual std::optional<QByteArray> data(const QString &mimeType) const = 0;

    // Empties the clipboard; the change count moves.
    virtual void clearContents() = 0;
    // Offers the given formats until someone else takes the clipboard; the
    // change count moves before this returns.
    virtual void write(QMimeData *data) = 0;

Q_SIGNALS:
    // The change count moved. Sent synchronously from our own writes.
    void changed();
};
