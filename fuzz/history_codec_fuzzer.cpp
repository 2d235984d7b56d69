// SPDX-License-Identifier: GPL-3.0-or-later
// Arbitrary bytes as a history file: decoding must never crash, and whatever
// decodes must survive being written and read again unchanged.
#include "HistoryCodec.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const auto items = HistoryCodec::decode(bytes);
    if (!items)
        return 0;

    const QByteArray encoded = HistoryCodec::encode(*items);
    const auto again = HistoryCodec::decode(encoded);
    if (!again) {
        std::fprintf(stderr, "re-encoded history does not decode:\n%s\n", encoded.constData());
        std::abort();
    }
    if (*again != *items) {
        std::fprintf(stderr, "history changed in a round trip; re-encoded as:\n%s\n", encoded.constData());
        std::abort();
    }
    // Writing is deterministic: a second pass gives the same bytes, so a file
    // that is only read and saved again does not change.
    if (HistoryCodec::encode(*again) != encoded) {
        std::fprintf(stderr, "second encoding differs from the first:\n%s\n", encoded.constData());
        std::abort();
    }
    return 0;
}
