// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// Handling copies of many megabytes without paying for every 4 KiB page:
// touching fresh memory page by page costs more than decoding into it.
namespace LargeData {

// Asks the kernel to back the buffer with huge pages where it can, before
// the buffer is first written. Does nothing for small buffers.
void adviseHugePages(void *data, qsizetype bytes);

// QString::fromUtf8, with the same replacement of invalid sequences and the
// same leading byte-order mark dropped, into huge-page backed memory when the
// text is large.
QString fromUtf8(const QByteArray &utf8);

} // namespace LargeData
