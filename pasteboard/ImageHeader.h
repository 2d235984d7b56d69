// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

#include <optional>

// What capture needs to know of copied picture bytes, without decoding more
// than it must.
namespace ImageHeader {

// The picture's size as its header states it, when the bytes are a picture in
// that format within the capture bounds. Reads the header only.
std::optional<QSize> size(const QByteArray &bytes, const char *format);

// Decodes the whole picture, within the capture bounds.
std::optional<QImage> decode(const QByteArray &bytes, const char *format);

} // namespace ImageHeader
