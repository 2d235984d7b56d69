// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipboardSnapshot.h"

#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <optional>

class QMimeData;

// The system clipboard as the watcher and paste-back see it. Reads never
// block: they serve the snapshot published with the current change count,
// which an implementation that must ask another program for the data reads
// beforehand.
class Pasteboard : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Moves on every change of the clipboard's contents, our own writes and
    // clearing included. Never moves back.
    qint64 changeCount() const { return m_changeCount; }
    // The types offered at the current change, in the owner's order.
    QStringList types() const { return m_snapshot.types; }
    // The bytes of one type, or nothing when the type is not offered, could
    // not be read, or was larger than the capture bounds.
    std::optional<QByteArray> data(const QString &mimeType) const;

    // The URLs of the text/uri-list offered, or else of the file manager's
    // list of copied files, in order; empty when there is neither or it is
    // larger than the capture bounds.
    QList<QUrl> urls() const;
    // The text of one type, decoded as UTF-8 (invalid sequences become
    // U+FFFD); for text/uri-list, its first URL as written; for
    // text/x-moz-url, its first line, decoded from UTF-16.
    std::optional<QString> string(const QString &mimeType) const;
    // Whether the writer marked the current contents as a secret.
    bool isMarkedSecret() const { return m_snapshot.isMarkedSecret(); }
    // The current change left the clipboard empty because the program that
    // offered the contents before it quit.
    bool ownerQuit() const { return m_snapshot.ownerQuit; }

    // Asked on the main thread when another program's copy is announced:
    // what of it is worth reading. Everything when unset.
    void setReadScope(std::function<ReadScope()> scope) { m_readScope = std::move(scope); }
    ReadScope readScope() const { return m_readScope ? m_readScope() : ReadScope::Everything; }
    // Forgets the bytes of the current contents, keeping their types: once
    // handled, a copied password or picture has no reason to stay in memory.
    void releaseData() { m_snapshot.data.clear(); }

    // Runs write, which puts our own contents on the clipboard, only while no
    // program offers contents, not even one that has stopped answering, and
    // so that no program can take the clipboard between the check and the
    // write. Returns whether write ran.
    virtual bool writeIfUnowned(const std::function<void()> &write) = 0;

    // Empties the clipboard; the change count moves before this returns.
    virtual void clearContents() = 0;
    // Offers the formats of data, which this takes, until someone else takes
    // the clipboard; the change count moves before this returns.
    virtual void write(QMimeData *data) = 0;

Q_SIGNALS:
    // The change count moved. Sent synchronously from our own writes.
    void changed();

protected:
    // Makes the snapshot the clipboard's contents at a new change count.
    void publish(ClipboardSnapshot snapshot);

private:
    qint64 m_changeCount = 0;
    ClipboardSnapshot m_snapshot;
    std::function<ReadScope()> m_readScope;
};
