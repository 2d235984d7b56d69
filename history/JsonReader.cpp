// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonReader.h"

#include <QByteArray>

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

// UTF-8 the parser has already checked, to UTF-16.
char16_t *appendUtf8(char16_t *write, const unsigned char *read, const unsigned char *end)
{
    while (read < end) {
        const unsigned char lead = *read;
        if (lead < 0x80) {
            *write++ = lead;
            ++read;
        } else if (lead < 0xE0) {
            *write++ = char16_t(((lead & 0x1F) << 6) | (read[1] & 0x3F));
            read += 2;
        } else if (lead < 0xF0) {
            *write++ = char16_t(((lead & 0x0F) << 12) | ((read[1] & 0x3F) << 6) | (read[2] & 0x3F));
            read += 3;
        } else {
            const char32_t codePoint
                = ((lead & 0x07) << 18) | ((read[1] & 0x3F) << 12) | ((read[2] & 0x3F) << 6) | (read[3] & 0x3F);
            *write++ = QChar::highSurrogate(codePoint);
            *write++ = QChar::lowSurrogate(codePoint);
            read += 4;
        }
    }
    return write;
}

} // namespace

bool readString(const char *contents, const char *end, QString *out)
{
    // The quote that ends the string is the first one not escaped; until an
    // escape turns up, the string is plain UTF-8.
    const char *quote = static_cast<const char *>(std::memchr(contents, '"', size_t(end - contents)));
    if (!quote)
        return false;
    const char *backslash = static_cast<const char *>(std::memchr(contents, '\\', size_t(quote - contents)));
    if (!backslash) {
        if (out)
            *out = QString::fromUtf8(contents, quote - contents);
        return true;
    }

    // Escapes: UTF-16 never needs more units than UTF-8 has bytes, so the
    // text is written into room for the raw bytes up to the last quote seen.
    QString text;
    char16_t *write = nullptr;
    const char *read = contents;
    const auto makeRoom = [&](const char *upTo) {
        if (!out)
            return;
        const qsizetype used = write ? write - reinterpret_cast<char16_t *>(text.data()) : 0;
        text.resize(used + (upTo - read));
        write = reinterpret_cast<char16_t *>(text.data()) + used;
    };
    makeRoom(quote);
    for (;;) {
        if (!backslash) {
            if (out)
                write = appendUtf8(write, reinterpret_cast<const unsigned char *>(read),
                    reinterpret_cast<const unsigned char *>(quote));
            break;
        }
        if (out)
            write = appendUtf8(write, reinterpret_cast<const unsigned char *>(read),
                reinterpret_cast<const unsigned char *>(backslash));
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
            // The parser's padding makes the four bytes readable; a quote
            // among them fails the hex check.
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
        if (read > quote) {
            // The quote found was escaped: the string goes on.
            quote = static_cast<const char *>(std::memchr(read, '"', size_t(end - read)));
            if (!quote)
                return false;
            makeRoom(quote);
        }
        backslash = static_cast<const char *>(std::memchr(read, '\\', size_t(quote - read)));
    }
    if (out) {
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
