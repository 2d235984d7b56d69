// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryFolder.h"

#include "HistoryCodec.h"
#include "MappedFile.h"
#include "PrivateFiles.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QStandardPaths>

Q_LOGGING_CATEGORY(lcHistory, "zettly.history", QtWarningMsg)

HistoryFolder::HistoryFolder(const QString &dirPath)
    : m_dirPath(QDir::cleanPath(dirPath))
    , m_dbPath(m_dirPath + QStringLiteral("/clips.json"))
    , m_imagesDirPath(m_dirPath + QStringLiteral("/images"))
{
    // A folder that cannot be made shows later as saves that fail, silently.
    PrivateFiles::ensureFolder(m_dirPath);
    PrivateFiles::ensureFolder(m_imagesDirPath);
    PrivateFiles::removeInterruptedWrites(m_dbPath);
}

QString HistoryFolder::standardPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Zettly");
}

QList<ClipItem> HistoryFolder::load()
{
    if (!QFile::exists(m_dbPath))
        return {};
    if (const MappedFile mapped(m_dbPath, HistoryCodec::readPadding); mapped.isValid()) {
        if (auto items = HistoryCodec::decodeInPlace(mapped.bytes()))
            return std::move(*items);
    }
    const QString aside = PrivateFiles::moveAsideUnreadable(m_dbPath);
    // Saving over a file that could not be moved away would destroy it.
    m_savesBlocked = aside.isEmpty();
    qCInfo(lcHistory) << "history file unreadable; moved to" << aside;
    return {};
}

bool HistoryFolder::save(const QList<ClipItem> &items) const
{
    if (m_savesBlocked)
        return false;
    QString errorText;
    if (PrivateFiles::writeAtomically(m_dbPath, HistoryCodec::encode(items), &errorText))
        return true;
    qCInfo(lcHistory) << "could not save the history:" << errorText;
    return false;
}

QString HistoryFolder::imagePath(const QString &imageRelPath) const
{
    if (imageRelPath.isEmpty() || imageRelPath.contains(u'/') || imageRelPath == u"." || imageRelPath == u"..")
        return {};
    return m_imagesDirPath + u'/' + imageRelPath;
}

void HistoryFolder::deleteImage(const QString &imageRelPath) const
{
    if (const QString path = imagePath(imageRelPath); !path.isEmpty())
        QFile::remove(path);
}
