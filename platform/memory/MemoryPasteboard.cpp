// SPDX-License-Identifier: GPL-3.0-or-later
#include "MemoryPasteboard.h"

#include "PasteboardTypes.h"

#include <QMimeData>

#include <memory>

void MemoryPasteboard::copy(ClipboardSnapshot snapshot)
{
    snapshot.limitTo(readScope());
    m_hasOwner = true;
    publish(std::move(snapshot));
}

void MemoryPasteboard::copyText(const QString &text)
{
    copy({ { PasteboardTypes::string }, { { PasteboardTypes::string, text.toUtf8() } } });
}

void MemoryPasteboard::quitOwner()
{
    m_hasOwner = false;
    ClipboardSnapshot gone;
    gone.ownerQuit = true;
    publish(std::move(gone));
}

void MemoryPasteboard::clearContents()
{
    // Clearing gives the clipboard up: nobody owns it.
    m_hasOwner = false;
    publish({});
}

void MemoryPasteboard::write(QMimeData *data)
{
    const std::unique_ptr<QMimeData> owned(data);
    m_hasOwner = true;
    publish(ClipboardSnapshot::fromMimeData(*owned));
}

bool MemoryPasteboard::writeIfUnowned(const std::function<void()> &write)
{
    if (m_hasOwner)
        return false;
    write();
    return true;
}
