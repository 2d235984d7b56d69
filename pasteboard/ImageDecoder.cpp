// SPDX-License-Identifier: GPL-3.0-or-later
#include "ImageDecoder.h"

#include "ImageHeader.h"

#include <QBuffer>
#include <QImageReader>

std::optional<QSize> ImageDecoder::decodedSize(const QByteArray &bytes, const char *format)
{
    const auto size = ImageHeader::size(bytes, format);
    if (!size)
        return std::nullopt;
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    // Every row is still decoded, but only a thumbnail is kept.
    reader.setScaledSize(size->scaled(64, 64, Qt::KeepAspectRatio).expandedTo({ 1, 1 }));
    if (reader.read().isNull())
        return std::nullopt;
    return size;
}

std::optional<QImage> ImageDecoder::decode(const QByteArray &bytes, const char *format)
{
    if (!ImageHeader::size(bytes, format))
        return std::nullopt;
    QImage image;
    if (!image.loadFromData(bytes, format) || image.isNull())
        return std::nullopt;
    return image;
}
