// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QtGlobal>

// Bounds on what one copy may bring into the history. Larger data is not
// captured at all: a cut text or a downscaled picture would paste back as
// something the user never copied.
namespace CaptureLimits {

// Each text or link, in UTF-8 bytes: room for a log file or a data dump; the
// history's own bound keeps such copies from piling up.
constexpr qint64 maxTextBytes = 64 * 1024 * 1024;
// A list of copied files, in bytes of its text/uri-list.
constexpr qint64 maxUriListBytes = 8 * 1024 * 1024;
// The encoded bytes of one PNG or TIFF picture.
constexpr qint64 maxImageBytes = 64 * 1024 * 1024;
// Either side of a picture, in pixels, as its header states it.
constexpr int maxImageSide = 16384;
// A marker's value, such as "secret".
constexpr qint64 maxMarkerBytes = 4096;

// The most bytes worth transferring for one type: reading past it would only
// make a copy that capture then refuses.
qint64 maxBytes(const QString &mimeType);

} // namespace CaptureLimits
