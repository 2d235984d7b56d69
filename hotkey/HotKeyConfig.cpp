// SPDX-License-Identifier: GPL-3.0-or-later
#include "HotKeyConfig.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

std::optional<quint32> unsigned32(const QJsonValue &value)
{
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    // Integers up to 2^32 - 1 are exact in a double; 9.5 or -1 are not keys.
    if (!(number >= 0 && number <= 4294967295.0) || std::trunc(number) != number)
        return std::nullopt;
    return static_cast<quint32>(number);
}

} // namespace

QByteArray HotKeyConfig::toJson() const
{
    return "{\"keyCode\":" + QByteArray::number(keyCode) + ",\"modifiers\":" + QByteArray::number(modifiers) + '}';
}

std::optional<HotKeyConfig> HotKeyConfig::fromJson(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    const auto keyCode = unsigned32(object.value(QLatin1String("keyCode")));
    const auto modifiers = unsigned32(object.value(QLatin1String("modifiers")));
    if (!keyCode || !modifiers)
        return std::nullopt;
    return HotKeyConfig { *keyCode, *modifiers };
}
