// SPDX-License-Identifier: GPL-3.0-or-later
#include "WlClipboard.h"

#include <QProcess>

namespace WlClipboard {

bool copy(const QByteArray &bytes, const QString &type)
{
    QProcess process;
    process.start(QStringLiteral("wl-copy"), { QStringLiteral("--type"), type });
    process.write(bytes);
    process.closeWriteChannel();
    // wl-copy goes on serving in a child of its own once it owns the
    // selection.
    return process.waitForFinished(10000) && process.exitCode() == 0;
}

std::optional<QByteArray> paste(const QString &type)
{
    QProcess process;
    process.start(QStringLiteral("wl-paste"), { QStringLiteral("--no-newline"), QStringLiteral("--type"), type });
    if (!process.waitForFinished(10000) || process.exitCode() != 0)
        return std::nullopt;
    return process.readAllStandardOutput();
}

} // namespace WlClipboard
