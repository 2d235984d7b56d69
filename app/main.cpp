// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "HistoryFolder.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Zettly"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZETTLY_VERSION));

    AppSettings &settings = AppSettings::shared();
    ClipboardStore store(settings, HistoryFolder::standardPath());

    // The clipboard watcher and the picker are not wired in yet: say what is
    // running, then wait.
    QTextStream(stdout) << QStringLiteral("Zettly %1 : %2 entrées chargées depuis %3, réglages lus dans %4. "
                                          "En attente (Ctrl+C pour quitter).\n")
                               .arg(QCoreApplication::applicationVersion())
                               .arg(store.items().size())
                               .arg(HistoryFolder::standardPath(), AppSettings::standardFilePath())
                        << Qt::flush;
    return app.exec();
}
