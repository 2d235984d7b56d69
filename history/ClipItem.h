// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipKind.h"

#include <QString>
#include <QStringList>
#include <QUuid>

#include <optional>

// One entry of the clipboard history: a plain value.
struct ClipItem {
    // Seconds from 1970-01-01 to 2001-01-01, the epoch of createdAt.
    static constexpr double referenceDateOffset = 978307200.0;

    QUuid id = QUuid::createUuid();
    ClipKind kind = ClipKind::Text;
    // One line shown in the picker and searched by the filter.
    QString preview;
    // The whole text of a text or link entry.
    std::optional<QString> fullText;
    // An image entry's file name inside the images folder.
    std::optional<QString> imageRelPath;
    // A file entry's absolute paths, in clipboard order.
    std::optional<QStringList> filePaths;
    bool pinned = false;
    // Seconds since 2001-01-01 00:00:00 UTC, with fraction.
    double createdAt = now();
    // Identifier of the application in front when the entry was captured.
    std::optional<QString> sourceApp;

    static double now();

    // The stored object, compact, members in field order: absent optionals
    // left out, the id in upper case, createdAt exact to the last bit.
    QByteArray toJson() const;
    void appendJson(QByteArray &out) const;
};

// All nine fields equal; texts under canonical equivalence, createdAt to the
// exact instant.
// Every member is movable in memory, so lists shift entries without copying
// them one by one.
Q_DECLARE_TYPEINFO(ClipItem, Q_RELOCATABLE_TYPE);

bool operator==(const ClipItem &a, const ClipItem &b);
// Feeds the nine fields in declaration order, with a presence marker before
// each optional.
size_t qHash(const ClipItem &item, size_t seed = 0);
