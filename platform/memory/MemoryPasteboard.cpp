// SPDX-License-Identifier: GPL-3.0-or-later
#include "MemoryPasteboard.h"

#include "PasteboardTypes.h"

#include <QMimeData>

#include <memory>

void MemoryPasteboard::copy(ClipboardSnapshot snapshot)
{
    publish(std::move(snapshot));
}

void MemoryPasteboard::copyText(const QString &text)
{
    copy({ { PasteboardTypes::string }, { { PasteboardTypes::string, text.toUtf8() } } });
}

void MemoryPasteboard::clearContents()
{
    publish({});
}

void MemoryPasteboard::write(QMimeData *data)
{
    const std::unique_ptr<QMimeData> owned(data);
    publish(ClipboardSnapshot::fromMimeData(*owned));
}
