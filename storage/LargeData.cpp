// SPDX-License-Identifier: GPL-3.0-or-later
#include "LargeData.h"

#include <QStringDecoder>

#include <sys/mman.h>

#include <cstdint>

namespace {

constexpr qsizetype hugePageBytes = 2 * 1024 * 1024;

} // namespace

void LargeData::adviseHugePages(void *data, qsizetype bytes)
{
#ifdef MADV_HUGEPAGE
    // Only the whole huge pages inside the buffer can be backed by them.
    const auto start
        = (reinterpret_cast<std::uintptr_t>(data) + hugePageBytes - 1) & ~std::uintptr_t(hugePageBytes - 1);
    const auto end
        = (reinterpret_cast<std::uintptr_t>(data) + std::uintptr_t(bytes)) & ~std::uintptr_t(hugePageBytes - 1);
    if (end > start)
        madvise(reinterpret_cast<void *>(start), end - start, MADV_HUGEPAGE);
#else
    Q_UNUSED(data);
    Q_UNUSED(bytes);
#endif
}

QString LargeData::fromUtf8(const QByteArray &utf8)
{
    if (utf8.size() < 4 * hugePageBytes)
        return QString::fromUtf8(utf8);
    QStringDecoder decoder(QStringConverter::Utf8);
    // A UTF-8 byte never gives more than one UTF-16 unit.
    QString text(decoder.requiredSpace(utf8.size()), Qt::Uninitialized);
    adviseHugePages(text.data(), text.size() * qsizetype(sizeof(QChar)));
    const QChar *end = decoder.appendToBuffer(text.data(), utf8);
    text.truncate(end - text.constData());
    return text;
}
