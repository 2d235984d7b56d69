// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

// A fresh folder per test, removed afterwards.
class TestFolder : public ::testing::Test {
protected:
    QString path(const QString &name) const { return m_dir.filePath(name); }

    static QByteArray readAll(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static void writeAll(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }

    // Permission bits as ls shows them, e.g. 0600.
    static mode_t modeOf(const QString &path)
    {
        struct stat info { };
        return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? (info.st_mode & 07777) : 0;
    }

    // Backdates a file by a day, so that a later write shows in its time;
    // returns that time.
    static QDateTime backdate(const QString &path)
    {
        const QDateTime dayBefore = QDateTime::currentDateTime().addDays(-1);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadWrite) && file.setFileTime(dayBefore, QFileDevice::FileModificationTime));
        return dayBefore;
    }

private:
    QTemporaryDir m_dir;
};

// A text entry whose preview is its whole text.
inline ClipItem textClip(const QString &text, double createdAt = ClipItem::now())
{
    // Assigned, not aggregate-initialised: g++ warns of every optional left out.
    ClipItem item;
    item.fullText = item.preview = text;
    item.createdAt = createdAt;
    return item;
}

// The entries' previews in order, a pinned one's marked with '*'.
inline QStringList previews(const QList<ClipItem> &items)
{
    QStringList result;
    for (const ClipItem &item : items)
        result.append(item.preview + (item.pinned ? QStringLiteral("*") : QString()));
    return result;
}

// Readable failure messages for texts and entries.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}
// Cut short: a history near its byte bound holds megabytes of text.
inline void PrintTo(const ClipItem &item, std::ostream *out)
{
    const QByteArray json = item.toJson();
    *out << json.left(300).constData() << (json.size() > 300 ? "…" : "");
}
