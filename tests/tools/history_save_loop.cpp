// SPDX-License-Identifier: GPL-3.0-or-later
// Adds numbered entries to a history folder until killed, reporting each one
// once its save has been written. The crash test kills it at random moments.
//
//   history_save_loop <history folder> <settings file>
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "SaveLoopEntries.h"

#include <cstdio>

int main(int argc, char *argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s <history folder> <settings file>\n", argv[0]);
        return 2;
    }
    AppSettings settings(QString::fromLocal8Bit(argv[2]));
    if (settings.historyLimit() != SaveLoopEntries::historyLimit)
        settings.setHistoryLimit(SaveLoopEntries::historyLimit);

    ClipboardStore store(settings, QString::fromLocal8Bit(argv[1]));
    // Go on from the newest entry a previous run saved, so the numbers in the
    // file stay consecutive across kills.
    qint64 sequence = store.items().isEmpty() ? 0 : store.items().first().preview.toLongLong();
    std::printf("loaded %lld\n", static_cast<long long>(sequence));
    std::fflush(stdout);

    for (;;) {
        ++sequence;
        store.add(ClipItem {
            .kind = ClipKind::Text,
            .preview = SaveLoopEntries::preview(sequence),
            .fullText = SaveLoopEntries::text(sequence),
        });
        store.flush();
        std::printf("saved %lld\n", static_cast<long long>(sequence));
        std::fflush(stdout);
    }
}
