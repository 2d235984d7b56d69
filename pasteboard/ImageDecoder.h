// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

#include <optional>

// Decodes copied picture bytes, within the capture bounds: a header that
// promises a picture is not enough, its pixels must decode too.
namespace ImageDecoder {

// The picture's size when all of its pixels decode. Keeps only a small
// thumbnail in memory while it checks, so a picture of any size within the
// bounds may be checked.
std::optional<QSize> decodedSize(const QByteArray &bytes, const char *format);

// The whole picture, for a conversion. Qt refuses pictures above its
// allocation limit (128 MiB of pixels).
std::optional<QImage> decode(const QByteArray &bytes, const char *format);

} // namespace ImageDecoder
