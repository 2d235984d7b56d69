// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonWriter.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>

namespace JsonWriter {

namespace {

constexpr char hexDigits[] = "0123456789abcdef";
constexpr qsizetype chunkUnits = worstCaseChunkBytes / 6;

// For each ASCII character: 0 when it is written as it is, otherwise the
// letter of its escape ('u' for the \u00XX form).
constexpr std::array<char, 128> asciiEscapes = [] {
    std::array<char, 128> escapes {};
    for (int c = 0; c < 0x20; ++c)
        escapes[c] = 'u';
    escapes['\b'] = 'b';
    escapes['\f'] = 'f';
    escapes['\n'] = 'n';
    escapes['\r'] = 'r';
    escapes['\t'] = 't';
    escapes['"'] = '"';
    escapes['\\'] = '\\';
    return escapes;
}();

} // namespace

void appendString(QByteArray &out, QStringView text)
{
    out += '"';
    const char16_t *read = text.utf16();
    const char16_t *const end = read + text.size();
    while (read < end) {
        // Room for the worst case (a six-byte escape per unit) is made a chunk
        // at a time, so that a huge text does not need six times its size.
        const char16_t *chunkEnd = read + std::min<qsizetype>(end - read, chunkUnits);
        if (chunkEnd < end && QChar::isHighSurrogate(chunkEnd[-1]))
            ++chunkEnd; // keep a surrogate pair together
        const qsizetype start = out.size();
        out.resize(start + 6 * (chunkEnd - read));
        char *write = out.data() + start;
        while (read < chunkEnd) {
            const char16_t unit = *read++;
            if (unit < 0x80) {
                const char escape = asciiEscapes[unit];
                if (escape == 0) {
                    *write++ = char(unit);
                    continue;
                }
                *write++ = '\\';
                *write++ = escape;
                if (escape == 'u') {
                    write = std::copy_n("00", 2, write);
                    *write++ = hexDigits[unit >> 4];
                    *write++ = hexDigits[unit & 0xF];
                }
            } else if (unit < 0x800) {
                *write++ = char(0xC0 | (unit >> 6));
                *write++ = char(0x80 | (unit & 0x3F));
            } else if (QChar::isHighSurrogate(unit) && read < chunkEnd && QChar::isLowSurrogate(*read)) {
                const char32_t codePoint = QChar::surrogateToUcs4(unit, *read++);
                *write++ = char(0xF0 | (codePoint >> 18));
                *write++ = char(0x80 | ((codePoint >> 12) & 0x3F));
                *write++ = char(0x80 | ((codePoint >> 6) & 0x3F));
                *write++ = char(0x80 | (codePoint & 0x3F));
            } else if (QChar::isSurrogate(unit)) {
                write = std::copy_n("\\u", 2, write);
                for (int shift = 12; shift >= 0; shift -= 4)
                    *write++ = hexDigits[(unit >> shift) & 0xF];
            } else {
                *write++ = char(0xE0 | (unit >> 12));
                *write++ = char(0x80 | ((unit >> 6) & 0x3F));
                *write++ = char(0x80 | (unit & 0x3F));
            }
        }
        out.truncate(write - out.constData());
    }
    out += '"';
}

void appendNumber(QByteArray &out, double value)
{
    // JSON has no infinity or NaN; no clock gives one, but the file must
    // stay readable whatever reaches it.
    if (!std::isfinite(value))
        value = 0;
    if (value == std::trunc(value) && std::abs(value) < 9007199254740992.0)
        out += QByteArray::number(qint64(value));
    else
        out += QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
}

} // namespace JsonWriter
