// SPDX-License-Identifier: GPL-3.0-or-later
#include "Pasteboard.h"

#include "CaptureLimits.h"
#include "PasteboardTypes.h"

#include <QtEndian>

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

// Browsers write UTF-16 in the machine's order, some with a byte-order mark.
QString fromUtf16(const QByteArray &bytes)
{
    const auto *units = reinterpret_cast<const char16_t *>(bytes.constData());
    qsizetype count = bytes.size() / 2;
    QString text = QString::fromUtf16(units, count);
    if (text.startsWith(QChar(0xFFFE))) {
        for (QChar &unit : text)
            unit = QChar(qbswap(unit.unicode()));
    }
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    return text;
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
    const bool fromFileManager = !data(PasteboardTypes::uriList).has_value();
    const auto list = fromFileManager ? data(PasteboardTypes::copiedFiles) : data(PasteboardTypes::uriList);
    if (!list || list->size() > CaptureLimits::maxUriListBytes)
        return {};
    QList<QByteArray> lines = uriLines(*list);
    // The file manager's first line says whether the files were copied or cut.
    if (fromFileManager) {
        if (lines.isEmpty() || (lines.first() != "copy" && lines.first() != "cut"))
            return {};
        lines.removeFirst();
    }
    QList<QUrl> result;
    for (const QByteArray &line : std::as_const(lines)) {
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
    if (mimeType == PasteboardTypes::mozUrl) {
        const QString text = fromUtf16(*bytes);
        const QString url = text.left(text.indexOf(u'\n')).trimmed();
        if (url.isEmpty())
            return std::nullopt;
        return url;
    }
    return QString::fromUtf8(*bytes);
}
