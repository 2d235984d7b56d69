// SPDX-License-Identifier: GPL-3.0-or-later
#include "ImageHeader.h"

#include "CaptureLimits.h"

#include <QBuffer>
#include <QImageReader>

std::optional<QSize> ImageHeader::size(const QByteArray &bytes, const char *format)
{
    if (bytes.size() > CaptureLimits::maxImageBytes)
        return std::nullopt;
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    if (!reader.canRead())
        return std::nullopt;
    const QSize size = reader.size();
    if (!size.isValid() || size.isEmpty() || size.width() > CaptureLimits::maxImageSide
        || size.height() > CaptureLimits::maxImageSide)
        return std::nullopt;
    return size;
}
