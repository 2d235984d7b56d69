// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QSize>

#include <optional>

// The size of copied picture bytes, read from their header alone.
namespace ImageHeader {

// The picture's size as its header states it, when the bytes start as a
// picture in that format within the capture bounds. The rest of the bytes is
// not looked at: see ImageDecoder for that.
std::optional<QSize> size(const QByteArray &bytes, const char *format);

} // namespace ImageHeader
