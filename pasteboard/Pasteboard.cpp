// SPDX-License-Identifier: GPL-3.0-or-later
#include "Pasteboard.h"

#include "CaptureLimits.h"
#include "PasteboardTypes.h"

namespace {

// The lines of a text/uri-list that name a URL: comments and blank lines are
// skipped, CR LF and bare LF both end a line.
QList<QByteArray> uriLines(const QByteArray &list)
{
    QList<QByteArray> lines;
    for (const QByteArray &raw : list.split('\n')) {
        const QByteArray line = raw.trimmed();
        if (!line.isEmpty() && !line.startsWith('#'))
            lines.append(line);
    }
    return lines;
}

} // namespace

std::optional<QByteArray> Pasteboard::data(const QString &mimeType) const
{
    const auto found = m_snapshot.data.constFind(mimeType);
    if (found == m_snapshot.data.cend())
        return std::nullopt;
    return *found;
}

void Pasteboard::publish(ClipboardSnapshot snapshot)
{
    m_snapshot = std::move(snapshot);
    ++m_changeCount;
    Q_EMIT changed();
}

QList<QUrl> Pasteboard::urls() const
{
    const auto list = data(PasteboardTypes::uriList);
    if (!list || list->size() > CaptureLimits::maxUriListBytes)
        return {};
    QList<QUrl> result;
    for (const QByteArray &line : uriLines(*list)) {
        const QUrl url = QUrl::fromEncoded(line);
        if (url.isValid())
            result.append(url);
    }
    return result;
}

std::optional<QString> Pasteboard::string(const QString &mimeType) const
{
    const auto bytes = data(mimeType);
    if (!bytes)
        return std::nullopt;
    if (mimeType == PasteboardTypes::uriList) {
        const QList<QByteArray> lines = uriLines(*bytes);
        if (lines.isEmpty())
            return std::nullopt;
        return QString::fromUtf8(lines.first());
    }
    return QString::fromUtf8(*bytes);
}
