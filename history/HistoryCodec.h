// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QByteArray>
#include <QList>

#include <optional>

// The history file's bytes: one compact JSON array of entries, top of the
// history first.
namespace HistoryCodec {

QByteArray encode(const QList<ClipItem> &items);
// No value when the bytes are not such an array or any one entry is
// malformed: a history is read whole or not at all.
std::optional<QList<ClipItem>> decode(const QByteArray &bytes);

} // namespace HistoryCodec
