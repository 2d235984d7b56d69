// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QStringView>

// Compact JSON written straight into a byte array. The history is rewritten on
// every change, and building QJsonObjects for QJsonDocument to serialise takes
// several times longer than this for a long history.
namespace JsonWriter {

// The most a string write reserves beyond what it keeps.
constexpr qsizetype worstCaseChunkBytes = 6 * 64 * 1024;

// The text as a quoted JSON string in UTF-8. A lone surrogate has no UTF-8
// form, so it is kept as a \u escape and reads back unchanged.
void appendString(QByteArray &out, QStringView text);
// The shortest number that reads back as exactly the same double; integral
// values are written without a fraction.
void appendNumber(QByteArray &out, double value);

} // namespace JsonWriter
