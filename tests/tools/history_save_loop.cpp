// SPDX-License-Identifier: GPL-3.0-or-later
// Adds numbered entries to a history folder until killed, reporting each one
// once its save has returned. The crash test kills it at random moments.
//
//   history_save_loop <history folder> [<settings file>]
//
// Without a settings file a temporary one is used; a killed run leaves that
// temporary folder behind, so repeated runs should pass one.
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "SaveLoopEntries.h"

#include <QTemporaryDir>

#include <cstdio>
#include <memory>

int main(int argc, char *argv[])
{
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: %s <history folder> [<settings file>]\n", argv[0]);
        return 2;
    }

    std::unique_ptr<QTemporaryDir> settingsDir;
    QString settingsPath;
    if (argc == 3) {
        settingsPath = QString::fromLocal8Bit(argv[2]);
    } else {
        settingsDir = std::make_unique<QTemporaryDir>();
        if (!settingsDir->isValid()) {
            std::fprintf(stderr, "no temporary folder for the settings\n");
            return 1;
        }
        settingsPath = settingsDir->filePath(QStringLiteral("defaults.json"));
    }
    AppSettings settings(settingsPath);
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
        std::printf("saved %lld\n", static_cast<long long>(sequence));
        std::fflush(stdout);
    }
}
