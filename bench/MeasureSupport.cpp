// SPDX-License-Identifier: GPL-3.0-or-later
#include "MeasureSupport.h"

#include "AppSettings.h"
#include "HistoryFolder.h"

#include <QCommandLineParser>
#include <QFile>

#include <algorithm>

namespace MeasureSupport {

QList<ClipItem> fillerHistory(qint64 count, qsizetype textLength)
{
    QList<ClipItem> items;
    items.reserve(count);
    const double now = ClipItem::now();
    for (qint64 i = 0; i < count; ++i) {
        QString text = QStringLiteral("Entrée ancienne n° ") + QString::number(i) + QStringLiteral(" : ");
        text.reserve(textLength + 40);
        while (text.size() < textLength)
            text += QStringLiteral("du texte copié auparavant, ");
        text.truncate(textLength);
        items.append(ClipItem {
            .kind = ClipKind::Text, .preview = text.left(200), .fullText = text, .createdAt = now - double(i) });
    }
    return items;
}

void prefillHistory(const QString &historyDir, const QString &settingsPath, qint64 count, qsizetype textLength)
{
    HistoryFolder folder(historyDir);
    if (count > 0)
        folder.save(fillerHistory(count, textLength));
    if (count > AppSettings::defaultHistoryLimit)
        AppSettings(settingsPath).setHistoryLimit(count);
}

std::optional<qint64> smapsKiB(qint64 pid, const QByteArray &name)
{
    QFile file(QStringLiteral("/proc/%1/smaps_rollup").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(QByteArray(name + ':')))
            return line.mid(name.size() + 1).trimmed().split(' ').value(0).toLongLong();
    }
    return std::nullopt;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    const qsizetype middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

QString figure(double ms)
{
    return QString::number(ms, 'f', 1) + QStringLiteral(" ms");
}

QString spread(const QList<double> &ms)
{
    const auto [least, most] = std::minmax_element(ms.cbegin(), ms.cend());
    return QStringLiteral("median ") + figure(median(ms)) + QStringLiteral(", min ") + figure(*least)
        + QStringLiteral(", max ") + figure(*most);
}

} // namespace MeasureSupport

std::optional<MeasureSupport::CommandLine> MeasureSupport::parseCommandLine(
    int argc, char *argv[], const QStringList &countNames)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QCommandLineParser parser;
    const QCommandLineOption app(QStringLiteral("app"), QString(), QStringLiteral("path"));
    parser.addOption(app);
    for (const QString &name : countNames)
        parser.addOption(QCommandLineOption(name, QString(), QStringLiteral("count")));
    if (!parser.parse(arguments) || !parser.positionalArguments().isEmpty())
        return std::nullopt;
    CommandLine line { parser.value(app), {} };
    for (const QString &name : countNames) {
        if (!parser.isSet(name))
            continue;
        bool ok = false;
        const qint64 count = parser.value(name).toLongLong(&ok);
        if (!ok || count < 0)
            return std::nullopt;
        line.counts.insert(name, count);
    }
    return line;
}
