// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <optional>

// The history file's bytes: one compact JSON array of entries, top of the
// history first.
namespace HistoryCodec {

// Spare bytes the decoder wants after the data it reads; bytes that come
// with that much room beyond their size are read without a copy.
constexpr qsizetype readPadding = 64;

QByteArray encode(const QList<ClipItem> &items);
// No value when the bytes are not such an array or any one entry is
// malformed: a history is read whole or not at all. Unknown members are
// ignored, null optionals read as absent, a member given twice counts once
// with its last value.
std::optional<QList<ClipItem>> decode(const QByteArray &bytes);
// The same, for bytes followed by at least readPadding readable bytes (a
// mapped file's zeroed tail), read where they are.
std::optional<QList<ClipItem>> decodeInPlace(QByteArrayView bytes);

} // namespace HistoryCodec
