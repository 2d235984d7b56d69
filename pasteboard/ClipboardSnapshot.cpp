// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardSnapshot.h"

#include "PasteboardTypes.h"

#include <QMimeData>

bool ClipboardSnapshot::isMarkedSecret() const
{
    if (types.contains(PasteboardTypes::concealed) || types.contains(PasteboardTypes::transient))
        return true;
    return types.contains(PasteboardTypes::passwordManagerHint)
        && data.value(PasteboardTypes::passwordManagerHint, "secret").trimmed() == "secret";
}

void ClipboardSnapshot::limitTo(ReadScope scope)
{
    if (scope == ReadScope::TypesOnly)
        data.clear();
    if (scope != ReadScope::UnlessMarkedSecret || !isMarkedSecret())
        return;
    const auto hint = data.constFind(PasteboardTypes::passwordManagerHint);
    QHash<QString, QByteArray> markers;
    if (hint != data.cend())
        markers.insert(hint.key(), hint.value());
    data = std::move(markers);
}

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
