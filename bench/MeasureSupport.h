// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

// What the measurement tools share: the histories they start from, the
// memory they read, the figures they print.
namespace MeasureSupport {

// A tool's command line: "--app <path>" and "--<name> <count>" options, each
// count 0 or more. No value on anything else.
struct CommandLine {
    QString appPath;
    QHash<QString, qint64> counts;
};
std::optional<CommandLine> parseCommandLine(int argc, char *argv[], const QStringList &countNames);

// Entries of textLength characters (200 unless told), each different, newest
// first.
QList<ClipItem> fillerHistory(qint64 count, qsizetype textLength = 200);
// Makes the history folder and gives it count filler entries, raising the
// limit in the settings file when the default would cut them.
void prefillHistory(const QString &historyDir, const QString &settingsPath, qint64 count, qsizetype textLength = 200);
// A "Name:   123 kB" line of /proc/<pid>/smaps_rollup, in KiB.
std::optional<qint64> smapsKiB(qint64 pid, const QByteArray &name);
double median(QList<double> values);
// "12.3 ms"
QString figure(double ms);
// "median 1.2 ms, min 0.9 ms, max 3.4 ms"; values must not be empty.
QString spread(const QList<double> &ms);

} // namespace MeasureSupport
