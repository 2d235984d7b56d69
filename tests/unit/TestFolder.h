// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

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

    static QDateTime modified(const QString &path) { return QFileInfo(path).lastModified(); }

    // Backdates a file, so that a later write shows in its time.
    static void backdate(const QString &path)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.setFileTime(QDateTime::currentDateTime().addDays(-1), QFileDevice::FileModificationTime);
    }

private:
    QTemporaryDir m_dir;
};

// Readable failure messages for texts.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}
