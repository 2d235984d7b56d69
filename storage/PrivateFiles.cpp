// SPDX-License-Identifier: GPL-3.0-or-later
#include "PrivateFiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>

namespace PrivateFiles {

namespace {
constexpr QFileDevice::Permissions ownerReadWrite = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr QFileDevice::Permissions ownerOnlyFolder = ownerReadWrite | QFileDevice::ExeOwner;
} // namespace

bool ensureFolder(const QString &path)
{
    QDir().mkpath(path);
    if (!QFileInfo(path).isDir())
        return false;
    // mkpath obeys the umask; the history must not be readable by others.
    QFile::setPermissions(path, ownerOnlyFolder);
    return true;
}

bool writeAtomically(const QString &path, const QByteArray &contents, QString *errorText)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        if (errorText)
            *errorText = file.errorString();
        return false;
    }
    // Set before any byte is written, so the data is never readable by others,
    // not even in the temporary file.
    file.setPermissions(ownerReadWrite);
    if (file.write(contents) != contents.size())
        file.cancelWriting();
    if (!file.commit()) {
        if (errorText)
            *errorText = file.errorString();
        return false;
    }
    return true;
}

void removeInterruptedWrites(const QString &path)
{
    const QFileInfo target(path);
    // QSaveFile names its temporary after the file plus six random letters
    // and digits.
    const QRegularExpression temporary(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(target.fileName()) + QStringLiteral("\\.[A-Za-z0-9]{6}")));
    const QDir folder = target.absoluteDir();
    for (const QString &name : folder.entryList(QDir::Files | QDir::Hidden)) {
        if (temporary.match(name).hasMatch())
            QFile::remove(folder.filePath(name));
    }
}

QString keepUnreadableCopy(const QString &path)
{
    if (!QFileInfo::exists(path))
        return {};
    const QString stamp = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString copy = path + QStringLiteral(".unreadable-") + stamp;
    for (int n = 2; QFileInfo::exists(copy); ++n)
        copy = path + QStringLiteral(".unreadable-") + stamp + u'-' + QString::number(n);
    if (!QFile::copy(path, copy))
        return {};
    QFile::setPermissions(copy, ownerReadWrite);
    return copy;
}

} // namespace PrivateFiles
