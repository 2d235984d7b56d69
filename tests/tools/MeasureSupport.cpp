// SPDX-License-Identifier: GPL-3.0-or-later
#include "MeasureSupport.h"

#include "AppSettings.h"
#include "HistoryFolder.h"

#include <QFile>

#include <algorithm>

namespace MeasureSupport {

QList<ClipItem> fillerHistory(qint64 count)
{
    QList<ClipItem> items;
    items.reserve(count);
    const double now = ClipItem::now();
    for (qint64 i = 0; i < count; ++i) {
        QString text = QStringLiteral("Entrée ancienne n° ") + QString::number(i) + QStringLiteral(" : ");
        while (text.size() < 200)
            text += QStringLiteral("du texte copié auparavant, ");
        text.truncate(200);
        items.append(
            ClipItem { .kind = ClipKind::Text, .preview = text, .fullText = text, .createdAt = now - double(i) });
    }
    return items;
}

void prefillHistory(const QString &historyDir, const QString &settingsPath, qint64 count)
{
    HistoryFolder folder(historyDir);
    if (count > 0)
        folder.save(fillerHistory(count));
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
