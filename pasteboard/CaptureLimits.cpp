// SPDX-License-Identifier: GPL-3.0-or-later
#include "CaptureLimits.h"

#include "PasteboardTypes.h"

qint64 CaptureLimits::maxBytes(const QString &mimeType)
{
    if (mimeType == PasteboardTypes::string)
        return maxTextBytes;
    // A browser's link offered alone is a short text.
    if (mimeType == PasteboardTypes::uriList || mimeType == PasteboardTypes::copiedFiles
        || mimeType == PasteboardTypes::mozUrl)
        return maxUriListBytes;
    if (mimeType == PasteboardTypes::png || mimeType == PasteboardTypes::tiff)
        return maxImageBytes;
    return maxMarkerBytes;
}
