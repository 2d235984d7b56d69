// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryCodec.h"

#include "JsonWriter.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace HistoryCodec {

QByteArray encode(const QList<ClipItem> &items)
{
    // One allocation in the common case (mostly ASCII text): room for the
    // texts, the other members, and the worst-case escaping of one chunk,
    // which each string write reserves before it shrinks to what it used.
    qsizetype expected = 2 + JsonWriter::worstCaseChunkBytes;
    for (const ClipItem &item : items) {
        const qsizetype textLength = item.fullText ? item.fullText->size() : 0;
        expected += 200 + item.preview.size() + textLength + textLength / 4;
    }
    QByteArray out;
    out.reserve(expected);
    out += '[';
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (i > 0)
            out += ',';
        items.at(i).appendJson(out);
    }
    out += ']';
    return out;
}
std::optional<QList<ClipItem>> decode(const QByteArray &bytes)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    const QJsonArray array = document.array();
    QList<ClipItem> items;
    items.reserve(array.size());
    for (const QJsonValue &element : array) {
        if (!element.isObject())
            return std::nullopt;
        auto item = ClipItem::fromJson(element.toObject());
        if (!item)
            return std::nullopt;
        items.append(std::move(*item));
    }
    return items;
}

} // namespace HistoryCodec
