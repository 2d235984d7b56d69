// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonReader.h"

#include <QByteArray>
#include <QStringDecoder>

#include <cstring>

namespace JsonReader {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<char16_t> hexValue(const char *digits)
{
    char16_t value = 0;
    for (int i = 0; i < 4; ++i) {
        const char c = digits[i];
        value <<= 4;
        if (c >= '0' && c <= '9')
            value |= char16_t(c - '0');
        else if (c >= 'a' && c <= 'f')
            value |= char16_t(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            value |= char16_t(c - 'A' + 10);
        else
            return std::nullopt;
    }
    return value;
}

constexpr std::ptrdiff_t shortRun = 64;

// UTF-8 to UTF-16 into a buffer of ours, with Qt's fast decoder. Each piece
// stands alone, and a U+FEFF at its start is text, not a byte-order mark.
char16_t *appendUtf8(char16_t *write, const char *read, const char *end)
{
    // The runs between escapes are mostly short and plain ASCII: widened
    // here, they cost less than setting up a decoder for each. An ASCII byte
    // never continues a sequence, so the decoder may take over at any point.
    if (end - read <= shortRun) {
        while (read < end && static_cast<unsigned char>(*read) < 0x80)
            *write++ = char16_t(*read++);
        if (read == end)
            return write;
    }
    QStringDecoder decoder(
        QStringDecoder::Utf8, QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    return reinterpret_cast<char16_t *>(
        decoder.appendToBuffer(reinterpret_cast<QChar *>(write), QByteArrayView(read, end - read)));
}

// The quote that ends the string: the first one not escaped, that is not
// preceded by an odd run of backslashes.
const char *closingQuote(const char *contents, const char *end)
{
    const char *quote = static_cast<const char *>(std::memchr(contents, '"', size_t(end - contents)));
    while (quote) {
        const char *before = quote;
        while (before > contents && before[-1] == '\\')
            --before;
        if ((quote - before) % 2 == 0)
            return quote;
        quote = static_cast<const char *>(std::memchr(quote + 1, '"', size_t(end - quote - 1)));
    }
    return nullptr;
}

} // namespace

bool readString(const char *contents, const char *end, QString *out)
{
    const char *const quote = closingQuote(contents, end);
    return quote && readStringBefore(contents, quote, out);
}

bool readStringBefore(const char *contents, const char *quote, QString *out)
{
    const char *backslash = static_cast<const char *>(std::memchr(contents, '\\', size_t(quote - contents)));
    if (!backslash) {
        if (out)
            *out = QString::fromUtf8(contents, quote - contents);
        return true;
    }

    // UTF-16 never needs more units than UTF-8 has bytes.
    QString text;
    char16_t *write = nullptr;
    if (out) {
        text.resize(quote - contents);
        write = reinterpret_cast<char16_t *>(text.data());
    }
    const char *read = contents;
    while (backslash) {
        if (out)
            write = appendUtf8(write, read, backslash);
        const char escaped = backslash[1];
        read = backslash + 2;
        char16_t unit = 0;
        switch (escaped) {
        case 'b':
            unit = u'\b';
            break;
        case 'f':
            unit = u'\f';
            break;
        case 'n':
            unit = u'\n';
            break;
        case 'r':
            unit = u'\r';
            break;
        case 't':
            unit = u'\t';
            break;
        case 'u': {
            // A quote among the four fails the hex check, so this never
            // reads past the string.
            const auto value = hexValue(read);
            if (!value)
                return false;
            unit = *value;
            read += 4;
            break;
        }
        default:
            if (static_cast<unsigned char>(escaped) >= 0x80)
                return false;
            unit = char16_t(escaped);
            break;
        }
        if (out)
            *write++ = unit;
        backslash = static_cast<const char *>(std::memchr(read, '\\', size_t(quote - read)));
    }
    if (out) {
        write = appendUtf8(write, read, quote);
        text.truncate(write - reinterpret_cast<char16_t *>(text.data()));
        *out = std::move(text);
    }
    return true;
}

std::optional<double> readNumber(std::string_view token)
{
    const char *const begin = token.data();
    const char *const end = begin + token.size();
    const char *at = begin;
    bool whole = true;
    if (at < end && *at == '-')
        ++at;
    if (at < end && *at == '0') {
        ++at;
    } else {
        while (at < end && isDigit(*at))
            ++at;
    }
    if (at < end && *at == '.') {
        ++at;
        while (at < end && isDigit(*at)) {
            whole = false;
            ++at;
        }
    }
    if (at < end && (*at == 'e' || *at == 'E')) {
        whole = false;
        ++at;
        if (at < end && (*at == '-' || *at == '+'))
            ++at;
        while (at < end && isDigit(*at))
            ++at;
    }
    if (at != end)
        return std::nullopt;

    const QByteArray number = QByteArray::fromRawData(begin, end - begin);
    bool ok = false;
    if (whole) {
        const qlonglong integer = number.toLongLong(&ok);
        if (ok)
            return double(integer);
    }
    const double value = number.toDouble(&ok);
    if (!ok)
        return std::nullopt;
    return value;
}

} // namespace JsonReader
