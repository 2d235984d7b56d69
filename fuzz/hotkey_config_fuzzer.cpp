// SPDX-License-Identifier: GPL-3.0-or-later
// Arbitrary bytes as a stored shortcut: reading must never crash, and a
// shortcut that reads must be written back as the same shortcut.
#include "HotKeyConfig.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const auto config = HotKeyConfig::fromJson(bytes);
    if (!config)
        return 0;

    const QByteArray json = config->toJson();
    const auto again = HotKeyConfig::fromJson(json);
    if (!again || *again != *config) {
        std::fprintf(stderr, "shortcut %u/%u did not survive a round trip through %s\n", config->keyCode,
            config->modifiers, json.constData());
        std::abort();
    }
    return 0;
}
