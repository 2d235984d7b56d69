// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>
#include <string_view>

// The scalar parts of a history file, read the way it has always been read:
// the parser finds the structure and checks the UTF-8, these read the
// strings' escapes and the numbers themselves.
namespace JsonReader {

// The JSON string whose contents start at `contents` (just after its opening
// quote) and whose closing quote comes before `end`. Each \uXXXX escape
// gives one UTF-16 unit, so a lone surrogate reads back unchanged; \b, \f,
// \n, \r and \t are the usual characters, and a backslash before any other
// ASCII character stands for that character. With `out` null
// the string is only checked. False for a bad \u escape or a backslash before
// a non-ASCII byte.
bool readString(const char *contents, const char *end, QString *out);
// The same, for a string whose closing quote is known to be at `quote`.
bool readStringBefore(const char *contents, const char *quote, QString *out);

// A number token: optional minus, digits (possibly none before a fraction),
// optional fraction (possibly no digits after the point), optional exponent.
// Whole numbers that fit 64 bits are converted from the integer. No value for
// a token of another form, or for a number beyond the range of a double (or
// so small that it would read as zero).
std::optional<double> readNumber(std::string_view token);

} // namespace JsonReader
