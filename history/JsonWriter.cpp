// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonWriter.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace JsonWriter {

namespace {

constexpr char hexDigits[] = "0123456789abcdef";

constexpr bool needsNoEscape(char16_t unit)
{
    return unit >= 0x20 && unit < 0x80 && unit != u'"' && unit != u'\\';
}

} // namespace

void appendString(QByteArray &out, QStringView text)
{
    const qsizetype start = out.size();
    // At most six bytes per UTF-16 unit (an escape), plus the quotes.
    out.resize(start + 6 * text.size() + 2);
    char *write = out.data() + start;
    *write++ = '"';
    const char16_t *read = text.utf16();
    const char16_t *const end = read + text.size();
    while (read < end) {
        // Most text is plain ASCII: copy it eight units at a time, in a loop
        // the compiler turns into vector code.
        while (end - read >= 8) {
            bool plain = true;
            for (int i = 0; i < 8; ++i)
                plain &= needsNoEscape(read[i]);
            if (!plain)
                break;
            for (int i = 0; i < 8; ++i)
                write[i] = char(read[i]);
            read += 8;
            write += 8;
        }
        if (read == end)
            break;
        const char16_t unit = *read++;
        if (unit >= 0x20 && unit < 0x80) {
            if (unit == u'"' || unit == u'\\')
                *write++ = '\\';
            *write++ = char(unit);
        } else if (unit < 0x20) {
            *write++ = '\\';
            switch (unit) {
            case u'\b': *write++ = 'b'; break;
            case u'\f': *write++ = 'f'; break;
            case u'\n': *write++ = 'n'; break;
            case u'\r': *write++ = 'r'; break;
            case u'\t': *write++ = 't'; break;
            default:
                write = std::copy_n("u00", 3, write);
                *write++ = hexDigits[unit >> 4];
                *write++ = hexDigits[unit & 0xF];
            }
        } else if (unit < 0x800) {
            *write++ = char(0xC0 | (unit >> 6));
            *write++ = char(0x80 | (unit & 0x3F));
        } else if (QChar::isHighSurrogate(unit) && read < end && QChar::isLowSurrogate(*read)) {
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
    *write++ = '"';
    out.truncate(write - out.constData());
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
