// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QSize>
#include <QString>

#include <optional>

class Pasteboard;

// Turns what the clipboard holds into one history entry. The kinds are tried
// in a fixed order, files, PNG, TIFF, link, text, and the first that fits
// wins: a copied file also offers its name as text, a copied picture often a
// link to it.
class ClipCapture {
public:
    // Pictures are written as "<UUID>.png" into imagesDirPath.
    ClipCapture(const Pasteboard &pasteboard, const QString &imagesDirPath);

    // The entry for the clipboard's current contents, or nothing to record.
    // sourceApp is stored as given.
    std::optional<ClipItem> capture(const std::optional<QString> &sourceApp) const;

private:
    std::optional<ClipItem> files() const;
    std::optional<ClipItem> png() const;
    std::optional<ClipItem> tiff() const;
    std::optional<ClipItem> link() const;
    std::optional<ClipItem> text() const;

    // Writes the PNG bytes under a fresh name and returns the entry for them.
    // A failed write still gives the entry: the picker copes with a missing
    // file, and the copy is not lost from the list.
    ClipItem storeImage(const QByteArray &pngBytes, QSize size) const;

    const Pasteboard &m_pasteboard;
    QString m_imagesDirPath;
};
