// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QList>
#include <QString>

// Where the history lives: a private folder holding "clips.json" and an
// "images" folder of PNG files.
class HistoryFolder {
public:
    // Creates the folder and its "images" folder (mode 0700) when missing.
    explicit HistoryFolder(const QString &dirPath);

    // $XDG_DATA_HOME/Zettly
    static QString standardPath();

    QString dirPath() const { return m_dirPath; }
    QString dbPath() const { return m_dbPath; }
    QString imagesDirPath() const { return m_imagesDirPath; }

    // The history as stored, in file order. A missing file gives an empty
    // history. So does one that cannot be read or decoded, after it is moved
    // aside as "clips.json.unreadable-<date>", so that no save destroys what
    // it holds; should that move fail, saves are refused for the session.
    QList<ClipItem> load();
    // Replaces "clips.json" in one step; on failure the file keeps its
    // previous contents.
    bool save(const QList<ClipItem> &items) const;

    // An image's location: the images folder plus its bare file name. Empty
    // for a name with a folder part, which no capture writes: a tampered file
    // must not point deletions outside the folder.
    QString imagePath(const QString &imageRelPath) const;
    // Deletes the image file; a missing file is fine.
    void deleteImage(const QString &imageRelPath) const;

private:
    QString m_dirPath;
    QString m_dbPath;
    QString m_imagesDirPath;
    bool m_savesBlocked = false;
};
