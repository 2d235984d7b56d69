// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipItem.h"

#include "CanonicalText.h"
#include "JsonWriter.h"

#include <QHashFunctions>
#include <QJsonArray>

#include <chrono>

namespace {

namespace Key {
const QString id = QStringLiteral("id");
const QString kind = QStringLiteral("kind");
const QString preview = QStringLiteral("preview");
const QString fullText = QStringLiteral("fullText");
const QString imageRelPath = QStringLiteral("imageRelPath");
const QString filePaths = QStringLiteral("filePaths");
const QString pinned = QStringLiteral("pinned");
const QString createdAt = QStringLiteral("createdAt");
const QString sourceApp = QStringLiteral("sourceApp");
} // namespace Key

// Only the canonical 8-4-4-4-12 form: QUuid alone would also take braces.
std::optional<QUuid> parseUuid(const QString &text)
{
    if (text.size() != 36)
        return std::nullopt;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        const bool hyphenPlace = i == 8 || i == 13 || i == 18 || i == 23;
        const bool hex = (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
        if (hyphenPlace ? c != u'-' : !hex)
            return std::nullopt;
    }
    return QUuid::fromString(text);
}

// Absent optionals are written as nothing, never as null.
void appendOptional(QByteArray &out, const char *member, const std::optional<QString> &value)
{
    if (value) {
        out += member;
        JsonWriter::appendString(out, *value);
    }
}

// Reading an optional text: absent or null is no value; any other type fails
// the whole entry.
bool readOptional(const QJsonObject &object, const QString &key, std::optional<QString> &out)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined() || value.isNull())
        return true;
    if (!value.isString())
        return false;
    out = value.toString();
    return true;
}

bool readOptionalList(const QJsonObject &object, const QString &key, std::optional<QStringList> &out)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined() || value.isNull())
        return true;
    if (!value.isArray())
        return false;
    const QJsonArray array = value.toArray();
    QStringList list;
    list.reserve(array.size());
    for (const QJsonValue &element : array) {
        if (!element.isString())
            return false;
        list.append(element.toString());
    }
    out = std::move(list);
    return true;
}

bool equalOptional(const std::optional<QString> &a, const std::optional<QString> &b)
{
    if (a.has_value() != b.has_value())
        return false;
    return !a || CanonicalText::equal(*a, *b);
}

bool equalOptional(const std::optional<QStringList> &a, const std::optional<QStringList> &b)
{
    if (a.has_value() != b.has_value())
        return false;
    if (!a)
        return true;
    if (a->size() != b->size())
        return false;
    for (qsizetype i = 0; i < a->size(); ++i) {
        if (!CanonicalText::equal(a->at(i), b->at(i)))
            return false;
    }
    return true;
}

size_t hashOptional(const std::optional<QString> &text, size_t seed)
{
    QtPrivate::QHashCombine combine;
    seed = combine(seed, text.has_value() ? 1 : 0);
    return text ? CanonicalText::hash(*text, seed) : seed;
}

} // namespace

double ClipItem::now()
{
    using namespace std::chrono;
    const auto sinceUnixEpoch = duration<double>(system_clock::now().time_since_epoch());
    return sinceUnixEpoch.count() - referenceDateOffset;
}

void ClipItem::appendJson(QByteArray &out) const
{
    out += "{\"id\":\"";
    out += id.toByteArray(QUuid::WithoutBraces).toUpper();
    out += "\",\"kind\":";
    JsonWriter::appendString(out, clipKindName(kind));
    out += ",\"preview\":";
    JsonWriter::appendString(out, preview);
    appendOptional(out, ",\"fullText\":", fullText);
    appendOptional(out, ",\"imageRelPath\":", imageRelPath);
    if (filePaths) {
        out += ",\"filePaths\":[";
        for (qsizetype i = 0; i < filePaths->size(); ++i) {
            if (i > 0)
                out += ',';
            JsonWriter::appendString(out, filePaths->at(i));
        }
        out += ']';
    }
    out += pinned ? ",\"pinned\":true" : ",\"pinned\":false";
    out += ",\"createdAt\":";
    JsonWriter::appendNumber(out, createdAt);
    appendOptional(out, ",\"sourceApp\":", sourceApp);
    out += '}';
}

QByteArray ClipItem::toJson() const
{
    QByteArray out;
    appendJson(out);
    return out;
}

std::optional<ClipItem> ClipItem::fromJson(const QJsonObject &object)
{
    const QJsonValue idValue = object.value(Key::id);
    const QJsonValue kindValue = object.value(Key::kind);
    const QJsonValue previewValue = object.value(Key::preview);
    const QJsonValue pinnedValue = object.value(Key::pinned);
    const QJsonValue createdAtValue = object.value(Key::createdAt);
    if (!idValue.isString() || !kindValue.isString() || !previewValue.isString() || !pinnedValue.isBool()
        || !createdAtValue.isDouble())
        return std::nullopt;

    const auto id = parseUuid(idValue.toString());
    const auto kind = clipKindFromName(kindValue.toString());
    if (!id || !kind)
        return std::nullopt;

    ClipItem item {
        .id = *id,
        .kind = *kind,
        .preview = previewValue.toString(),
        .pinned = pinnedValue.toBool(),
        .createdAt = createdAtValue.toDouble(),
    };
    if (!readOptional(object, Key::fullText, item.fullText)
        || !readOptional(object, Key::imageRelPath, item.imageRelPath)
        || !readOptionalList(object, Key::filePaths, item.filePaths)
        || !readOptional(object, Key::sourceApp, item.sourceApp))
        return std::nullopt;
    // Short texts are their own preview: one shared string instead of two
    // copies, which for a full history is most of its memory.
    if (item.fullText && *item.fullText == item.preview)
        item.preview = *item.fullText;
    return item;
}

bool operator==(const ClipItem &a, const ClipItem &b)
{
    return a.id == b.id && a.kind == b.kind && CanonicalText::equal(a.preview, b.preview)
        && equalOptional(a.fullText, b.fullText) && equalOptional(a.imageRelPath, b.imageRelPath)
        && equalOptional(a.filePaths, b.filePaths) && a.pinned == b.pinned && a.createdAt == b.createdAt
        && equalOptional(a.sourceApp, b.sourceApp);
}

size_t qHash(const ClipItem &item, size_t seed)
{
    QtPrivate::QHashCombine combine;
    seed = combine(seed, item.id);
    seed = combine(seed, clipKindName(item.kind));
    seed = CanonicalText::hash(item.preview, seed);
    seed = hashOptional(item.fullText, seed);
    seed = hashOptional(item.imageRelPath, seed);
    seed = combine(seed, item.filePaths.has_value() ? 1 : 0);
    if (item.filePaths) {
        seed = combine(seed, item.filePaths->size());
        for (const QString &path : *item.filePaths)
            seed = CanonicalText::hash(path, seed);
    }
    seed = combine(seed, item.pinned);
    seed = combine(seed, item.createdAt);
    return hashOptional(item.sourceApp, seed);
}
