// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryCodec.h"

#include "JsonReader.h"
#include "JsonWriter.h"
#include "LargeData.h"

#include <simdjson.h>

#include <cstring>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

namespace HistoryCodec {

namespace {

namespace od = simdjson::ondemand;

// Arrays and objects nest at most this deep, the history's own array
// counting as the first level: a file nested deeper never loaded.
constexpr int maxNesting = 1024;

// A full text at least this long is decoded once the whole file has been
// read, with the other long ones, on two threads: a large history's load is
// mostly turning those texts into UTF-16 in fresh memory.
constexpr std::ptrdiff_t deferredTextBytes = 64 * 1024;
// Below this much long text in all, a second thread costs more than it saves.
constexpr std::ptrdiff_t parallelTextBytes = 4 * 1024 * 1024;

// A string's contents in the file, up to its closing quote; none while
// contents is null.
struct StringSpan {
    const char *contents = nullptr;
    const char *quote = nullptr;
};

// What a member of an entry held. A name given twice counts with its last
// value, as it always has.
template<typename T> struct Member {
    enum State { Missing, Null, Mistyped, Given } state = Missing;
    T value {};

    bool isGiven() const { return state == Given; }
    // Optional members: missing or null is no value; any other type fails.
    bool readInto(std::optional<T> &out) const
    {
        if (state == Given)
            out = value;
        return state != Mistyped;
    }
};

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// A number may also start with its decimal point, as it always could.
bool typeOf(od::value &value, od::json_type &type)
{
    if (!value.type().get(type))
        return true;
    type = od::json_type::number;
    return value.raw_json_token().starts_with('.');
}

enum class Name { Id, Kind, Preview, FullText, ImageRelPath, FilePaths, Pinned, CreatedAt, SourceApp, Other };

Name nameOf(std::u16string_view name)
{
    static constexpr std::pair<std::u16string_view, Name> known[] {
        { u"id", Name::Id },
        { u"kind", Name::Kind },
        { u"preview", Name::Preview },
        { u"fullText", Name::FullText },
        { u"imageRelPath", Name::ImageRelPath },
        { u"filePaths", Name::FilePaths },
        { u"pinned", Name::Pinned },
        { u"createdAt", Name::CreatedAt },
        { u"sourceApp", Name::SourceApp },
    };
    for (const auto &[text, value] : known) {
        if (text == name)
            return value;
    }
    return Name::Other;
}

class EntryReader {
public:
    explicit EntryReader(const char *end)
        : m_end(end)
    {
    }

    // Checks a value the entry does not use as strictly as one it uses: the
    // file is well-formed JSON throughout or not read at all.
    bool skip(od::value &value, int level)
    {
        od::json_type type;
        if (!typeOf(value, type))
            return false;
        switch (type) {
        case od::json_type::array: {
            od::array array;
            if (level + 1 > maxNesting || value.get_array().get(array))
                return false;
            for (auto element : array) {
                od::value inner;
                if (std::move(element).get(inner) || !skip(inner, level + 1))
                    return false;
            }
            return true;
        }
        case od::json_type::object: {
            od::object object;
            if (level + 1 > maxNesting || value.get_object().get(object))
                return false;
            for (auto member : object) {
                od::field field;
                if (std::move(member).get(field) || !JsonReader::readString(field.key().raw(), m_end, nullptr)
                    || !skip(field.value(), level + 1))
                    return false;
            }
            return true;
        }
        case od::json_type::number:
            return number(value).has_value();
        case od::json_type::string:
            return text(value, nullptr);
        case od::json_type::boolean: {
            bool ignored = false;
            return !value.get_bool().get(ignored);
        }
        case od::json_type::null: {
            bool isNull = false;
            return !value.is_null().get(isNull) && isNull;
        }
        }
        return false;
    }

    bool read(od::value &value, Member<QString> &member, int level)
    {
        od::json_type type;
        if (!typeOf(value, type))
            return false;
        if (type != od::json_type::string)
            return other(value, type, member.state, level);
        member.state = Member<QString>::Given;
        return text(value, &member.value);
    }

    // As read(), but a long string is only found, in later, to be decoded
    // once the whole file is read. A long string this value replaces is
    // checked now: the file must be well-formed even where it is not used.
    bool read(od::value &value, Member<QString> &member, StringSpan &later, int level)
    {
        if (later.contents && !JsonReader::readStringBefore(later.contents, later.quote, nullptr))
            return false;
        later = {};
        od::json_type type;
        if (!typeOf(value, type))
            return false;
        if (type != od::json_type::string)
            return other(value, type, member.state, level);
        const std::optional<StringSpan> found = span(value);
        if (!found)
            return false;
        member.state = Member<QString>::Given;
        if (found->quote - found->contents >= deferredTextBytes) {
            member.value.clear();
            later = *found;
            return true;
        }
        return JsonReader::readStringBefore(found->contents, found->quote, &member.value);
    }

    bool read(od::value &value, Member<bool> &member, int level)
    {
        od::json_type type;
        if (!typeOf(value, type))
            return false;
        if (type != od::json_type::boolean)
            return other(value, type, member.state, level);
        member.state = Member<bool>::Given;
        return !value.get_bool().get(member.value);
    }

    bool read(od::value &value, Member<double> &member, int level)
    {
        od::json_type type;
        if (!typeOf(value, type))
            return false;
        if (type != od::json_type::number)
            return other(value, type, member.state, level);
        const auto parsed = number(value);
        member.state = Member<double>::Given;
        member.value = parsed.value_or(0);
        return parsed.has_value();
    }

    bool read(od::value &value, Member<QStringList> &member, int level)
    {
        od::json_type type;
        if (!typeOf(value, type))
            return false;
        if (type != od::json_type::array)
            return other(value, type, member.state, level);
        od::array array;
        if (level + 1 > maxNesting || value.get_array().get(array))
            return false;
        member.state = Member<QStringList>::Given;
        member.value.clear();
        for (auto element : array) {
            od::value inner;
            od::json_type innerType;
            if (std::move(element).get(inner) || !typeOf(inner, innerType))
                return false;
            if (innerType != od::json_type::string) {
                member.state = Member<QStringList>::Mistyped;
                if (!skip(inner, level + 1))
                    return false;
                continue;
            }
            QString path;
            if (!text(inner, &path))
                return false;
            member.value.append(std::move(path));
        }
        return true;
    }

    // The member's name, unescaped.
    std::optional<Name> name(const od::field &field) const
    {
        const char *raw = field.key().raw();
        const char *quote = static_cast<const char *>(std::memchr(raw, '"', size_t(m_end - raw)));
        if (quote && !std::memchr(raw, '\\', size_t(quote - raw))) {
            // Plain ASCII names compare without a copy.
            char16_t wide[16];
            const qsizetype length = quote - raw;
            if (length > qsizetype(std::size(wide)))
                return Name::Other;
            for (qsizetype i = 0; i < length; ++i)
                wide[i] = static_cast<unsigned char>(raw[i]);
            return nameOf(std::u16string_view(wide, size_t(length)));
        }
        QString unescaped;
        if (!JsonReader::readString(raw, m_end, &unescaped))
            return std::nullopt;
        return nameOf(
            std::u16string_view(reinterpret_cast<const char16_t *>(unescaped.utf16()), size_t(unescaped.size())));
    }

private:
    template<typename State> bool other(od::value &value, od::json_type type, State &state, int level)
    {
        state = type == od::json_type::null ? State::Null : State::Mistyped;
        return skip(value, level);
    }

    bool text(od::value &value, QString *out)
    {
        const std::optional<StringSpan> found = span(value);
        return found && JsonReader::readStringBefore(found->contents, found->quote, out);
    }

    // The parser has found where the string ends, escaped quotes and all: its
    // token runs up to the next structural character, spaces included.
    static std::optional<StringSpan> span(od::value &value)
    {
        std::string_view token = value.raw_json_token();
        while (!token.empty() && isSpace(token.back()))
            token.remove_suffix(1);
        od::raw_json_string raw;
        if (token.size() < 2 || token.back() != '"' || value.get_raw_json_string().get(raw))
            return std::nullopt;
        return StringSpan { raw.raw(), token.data() + token.size() - 1 };
    }

    static std::optional<double> number(od::value &value)
    {
        std::string_view token = value.raw_json_token();
        // The token runs up to the next structural character, spaces included.
        while (!token.empty() && isSpace(token.back()))
            token.remove_suffix(1);
        return JsonReader::readNumber(token);
    }

    const char *m_end;
};

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

// Texts that are their own preview: one shared string instead of two
// copies, which for a full history is most of its memory.
void shareWithPreview(ClipItem &item)
{
    if (item.fullText && *item.fullText == item.preview)
        item.preview = *item.fullText;
}

// One entry, or none for malformed JSON or JSON that is no entry: a
// required member missing, null or mistyped, an unknown kind, an id that is
// not a UUID, an optional member of the wrong type. A long full text is left
// out of the entry, its place in the file given in longFullText.
std::optional<ClipItem> readEntry(od::object &object, EntryReader &reader, StringSpan &longFullText)
{
    Member<QString> id, kind, preview, fullText, imageRelPath, sourceApp;
    Member<QStringList> filePaths;
    Member<bool> pinned;
    Member<double> createdAt;
    constexpr int level = 2;
    for (auto member : object) {
        od::field field;
        if (std::move(member).get(field))
            return std::nullopt;
        const auto name = reader.name(field);
        if (!name)
            return std::nullopt;
        od::value &value = field.value();
        bool wellFormed = false;
        switch (*name) {
        case Name::Id:
            wellFormed = reader.read(value, id, level);
            break;
        case Name::Kind:
            wellFormed = reader.read(value, kind, level);
            break;
        case Name::Preview:
            wellFormed = reader.read(value, preview, level);
            break;
        case Name::FullText:
            wellFormed = reader.read(value, fullText, longFullText, level);
            break;
        case Name::ImageRelPath:
            wellFormed = reader.read(value, imageRelPath, level);
            break;
        case Name::FilePaths:
            wellFormed = reader.read(value, filePaths, level);
            break;
        case Name::Pinned:
            wellFormed = reader.read(value, pinned, level);
            break;
        case Name::CreatedAt:
            wellFormed = reader.read(value, createdAt, level);
            break;
        case Name::SourceApp:
            wellFormed = reader.read(value, sourceApp, level);
            break;
        case Name::Other:
            wellFormed = reader.skip(value, level);
            break;
        }
        if (!wellFormed)
            return std::nullopt;
    }

    if (!id.isGiven() || !kind.isGiven() || !preview.isGiven() || !pinned.isGiven() || !createdAt.isGiven())
        return std::nullopt;
    const auto uuid = parseUuid(id.value);
    const auto clipKind = clipKindFromName(kind.value);
    if (!uuid || !clipKind)
        return std::nullopt;
    ClipItem item {
        .id = *uuid,
        .kind = *clipKind,
        .preview = preview.value,
        .pinned = pinned.value,
        .createdAt = createdAt.value,
    };
    if (!fullText.readInto(item.fullText) || !imageRelPath.readInto(item.imageRelPath)
        || !filePaths.readInto(item.filePaths) || !sourceApp.readInto(item.sourceApp))
        return std::nullopt;
    // A deferred full text is compared with the preview once decoded.
    if (!longFullText.contents)
        shareWithPreview(item);
    return item;
}

struct DeferredText {
    qsizetype entryIndex;
    StringSpan span;
};

std::ptrdiff_t bytesOf(const DeferredText &text)
{
    return text.span.quote - text.span.contents;
}

bool decodeRange(ClipItem *items, const DeferredText *begin, const DeferredText *end)
{
    for (const DeferredText *text = begin; text != end; ++text) {
        ClipItem &item = items[text->entryIndex];
        QString decoded;
        if (!JsonReader::readStringBefore(text->span.contents, text->span.quote, &decoded))
            return false;
        item.fullText = std::move(decoded);
        shareWithPreview(item);
    }
    return true;
}

// Many long texts are split in two parts of about the same size, the first
// decoded on a thread of its own while this one decodes the second.
bool decodeDeferredTexts(QList<ClipItem> &items, const std::vector<DeferredText> &texts)
{
    std::ptrdiff_t total = 0;
    for (const DeferredText &text : texts)
        total += bytesOf(text);
    ClipItem *const entries = items.data();
    const DeferredText *const begin = texts.data();
    const DeferredText *const end = begin + texts.size();
    if (total < parallelTextBytes || texts.size() < 2)
        return decodeRange(entries, begin, end);
    // At most half for the first part, and at least one text for each.
    const DeferredText *middle = begin + 1;
    for (std::ptrdiff_t first = bytesOf(*begin); middle + 1 < end && 2 * (first + bytesOf(*middle)) <= total;
         ++middle)
        first += bytesOf(*middle);
    bool firstDecoded = false;
    std::jthread firstPart;
    try {
        firstPart = std::jthread([&] { firstDecoded = decodeRange(entries, begin, middle); });
    } catch (const std::system_error &) {
        // No thread to be had: one does it all.
        return decodeRange(entries, begin, end);
    }
    const bool secondDecoded = decodeRange(entries, middle, end);
    firstPart.join();
    return firstDecoded && secondDecoded;
}

} // namespace

QByteArray encode(const QList<ClipItem> &items)
{
    // One allocation in the common case (mostly ASCII text): room for the
    // texts, the other members, and the worst-case escaping of one chunk,
    // which each string write reserves before it shrinks to what it used.
    qsizetype expected = 2 + JsonWriter::worstCaseChunkBytes + readPadding;
    for (const ClipItem &item : items) {
        const qsizetype textLength = item.fullText ? item.fullText->size() : 0;
        expected += 200 + item.preview.size() + textLength + textLength / 4;
    }
    QByteArray out;
    out.reserve(expected);
    LargeData::adviseHugePages(out.data(), out.capacity());
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
    static_assert(readPadding >= simdjson::SIMDJSON_PADDING);
    // The parser reads a little past the end: use the bytes in place when
    // their buffer has room for that, else a copy that has.
    if (bytes.capacity() - bytes.size() >= readPadding)
        return decodeInPlace(bytes);
    const simdjson::padded_string copy(bytes.constData(), size_t(bytes.size()));
    return decodeInPlace(QByteArrayView(copy.data(), qsizetype(copy.size())));
}

std::optional<QList<ClipItem>> decodeInPlace(QByteArrayView bytes)
{
    const char *data = bytes.data();
    size_t size = size_t(bytes.size());
    // A byte-order mark was always taken.
    if (size >= 3 && std::memcmp(data, "\xEF\xBB\xBF", 3) == 0) {
        data += 3;
        size -= 3;
    }
    const char *const end = data + size;

    od::parser parser;
    od::document document;
    if (parser.allocate(size, 2 * maxNesting)
        || parser.iterate(simdjson::padded_string_view(data, size, size + simdjson::SIMDJSON_PADDING)).get(document))
        return std::nullopt;
    od::array array;
    if (document.get_array().get(array))
        return std::nullopt;
    EntryReader reader(end);
    QList<ClipItem> items;
    std::vector<DeferredText> deferredTexts;
    for (auto element : array) {
        od::object object;
        if (element.get_object().get(object))
            return std::nullopt;
        StringSpan longFullText;
        auto entry = readEntry(object, reader, longFullText);
        if (!entry)
            return std::nullopt;
        if (longFullText.contents)
            deferredTexts.push_back({ items.size(), longFullText });
        items.append(std::move(*entry));
    }
    // Nothing but spaces may follow the array.
    const char *location = nullptr;
    if (document.current_location().get(location) != simdjson::OUT_OF_BOUNDS)
        return std::nullopt;
    if (!decodeDeferredTexts(items, deferredTexts))
        return std::nullopt;
    return items;
}

} // namespace HistoryCodec
