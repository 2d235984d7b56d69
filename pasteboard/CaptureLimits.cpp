// SPDX-License-Identifier: GPL-3.0-or-later
#include "CaptureLimits.h"

#include "PasteboardTypes.h"

qint64 CaptureLimits::maxBytes(const QString &mimeType)
{
    if (mimeType == PasteboardTypes::string)
        return maxTextBytes;
    if (mimeType == PasteboardTypes::uriList)
        return maxUriListBytes;
    if (mimeType == PasteboardTypes::png || mimeType == PasteboardTypes::tiff)
        return maxImageBytes;
    return maxMarkerBytes;
}
