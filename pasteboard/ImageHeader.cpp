// SPDX-License-Identifier: GPL-3.0-or-later
#include "ImageHeader.h"

#include "CaptureLimits.h"

#include <QBuffer>
#include <QImageReader>

namespace {

bool withinBounds(QSize size)
{
    return size.isValid() && !size.isEmpty() && size.width() <= CaptureLimits::maxImageSide
        && size.height() <= CaptureLimits::maxImageSide;
}

} // namespace

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
    if (!withinBounds(size))
        return std::nullopt;
    return size;
}

std::optional<QImage> ImageHeader::decode(const QByteArray &bytes, const char *format)
{
    if (!size(bytes, format))
        return std::nullopt;
    QImage image;
    if (!image.loadFromData(bytes, format) || image.isNull())
        return std::nullopt;
    return image;
}
