// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipItem.h"

#include "CanonicalText.h"
#include "JsonWriter.h"

#include <QHashFunctions>

#include <algorithm>
#include <chrono>

namespace {

// Absent optionals are written as nothing, never as null.
void appendOptional(QByteArray &out, const char *member, const std::optional<QString> &value)
{
    if (value) {
        out += member;
        JsonWriter::appendString(out, *value);
    }
}

bool equalOptional(const std::optional<QStringList> &a, const std::optional<QStringList> &b)
{
    if (a.has_value() != b.has_value())
        return false;
    if (!a)
        return true;
    return std::equal(a->cbegin(), a->cend(), b->cbegin(), b->cend(),
        [](const QString &x, const QString &y) { return CanonicalText::equal(x, y); });
}

size_t hashOptional(const std::optional<QString> &text, size_t seed)
{
    seed = qHash(text.has_value() ? 1 : 0, seed);
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

bool operator==(const ClipItem &a, const ClipItem &b)
{
    return a.id == b.id && a.kind == b.kind && CanonicalText::equal(a.preview, b.preview)
        && CanonicalText::equal(a.fullText, b.fullText) && CanonicalText::equal(a.imageRelPath, b.imageRelPath)
        && equalOptional(a.filePaths, b.filePaths) && a.pinned == b.pinned && a.createdAt == b.createdAt
        && CanonicalText::equal(a.sourceApp, b.sourceApp);
}

size_t qHash(const ClipItem &item, size_t seed)
{
    seed = qHashMulti(seed, item.id, clipKindName(item.kind));
    seed = CanonicalText::hash(item.preview, seed);
    seed = hashOptional(item.fullText, seed);
    seed = hashOptional(item.imageRelPath, seed);
    seed = qHash(item.filePaths.has_value() ? 1 : 0, seed);
    if (item.filePaths) {
        seed = qHash(item.filePaths->size(), seed);
        for (const QString &path : *item.filePaths)
            seed = CanonicalText::hash(path, seed);
    }
    // createdAt as the same instant whatever the sign of a zero, as == sees it.
    seed = qHashMulti(seed, item.pinned, item.createdAt);
    return hashOptional(item.sourceApp, seed);
}
