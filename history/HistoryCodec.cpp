// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryCodec.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace HistoryCodec {

QByteArray encode(const QList<ClipItem> &items)
{
    QJsonArray array;
    for (const ClipItem &item : items)
        array.append(item.toJson());
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
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
