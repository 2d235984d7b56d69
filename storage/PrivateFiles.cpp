// SPDX-License-Identifier: GPL-3.0-or-later
#include "PrivateFiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace PrivateFiles {

namespace {

const QString temporaryInfix = QStringLiteral(".saving-");

bool writeAll(int fd, const QByteArray &contents)
{
    const char *data = contents.constData();
    qsizetype left = contents.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, size_t(left));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data += written;
        left -= written;
    }
    return true;
}

} // namespace

bool ensureFolder(const QString &path)
{
    QDir().mkpath(path);
    if (!QFileInfo(path).isDir())
        return false;
    // mkpath obeys the umask; the history must not be readable by others.
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    return true;
}

bool writeAtomically(const QString &path, const QByteArray &contents, QString *errorText)
{
    const QByteArray target = QFile::encodeName(path);
    QByteArray temporary = QFile::encodeName(path + temporaryInfix) + "XXXXXX";
    // mkostemp creates the file 0600 whatever the umask, so the data is
    // never readable by others, not even while it is written.
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        if (errorText)
            *errorText = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    // Flushed before the rename, so that after a power cut the name points at
    // the old contents or the whole new ones.
    bool written = writeAll(fd, contents) && ::fdatasync(fd) == 0;
    int error = written ? 0 : errno;
    if (::close(fd) != 0 && written) {
        written = false;
        error = errno;
    }
    if (written && ::rename(temporary.constData(), target.constData()) == 0)
        return true;
    if (written)
        error = errno;
    ::unlink(temporary.constData());
    if (errorText)
        *errorText = QString::fromLocal8Bit(std::strerror(error));
    return false;
}

void removeInterruptedWrites(const QString &path)
{
    const QFileInfo target(path);
    const QDir folder = target.absoluteDir();
    const QString pattern = target.fileName() + temporaryInfix + QStringLiteral("??????");
    for (const QString &name : folder.entryList({ pattern }, QDir::Files | QDir::Hidden))
        QFile::remove(folder.filePath(name));
}

QString moveAsideUnreadable(const QString &path)
{
    const QString stamp = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString aside = path + QStringLiteral(".unreadable-") + stamp;
    for (int n = 2; QFileInfo::exists(aside); ++n)
        aside = path + QStringLiteral(".unreadable-") + stamp + u'-' + QString::number(n);
    if (!QFile::rename(path, aside))
        return {};
    QFile::setPermissions(aside, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return aside;
}

} // namespace PrivateFiles
