// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

// A small persistent store of typed values (boolean, integer, data) kept as
// one JSON object in a private file. Types stay apart: a string stored where
// a boolean is expected is not a boolean. Keys this program does not know are
// kept as they are when the file is written again.
//
// In the file, a boolean is a JSON boolean, an integer a JSON number and data
// an object {"data":"<base64>"}.
class UserDefaults {
public:
    // Reads the file once. A file that cannot be read or decoded is moved
    // aside first, so that the next write does not destroy it.
    explicit UserDefaults(QString filePath);

    // The bytes stored under key as data; nothing for a missing key or a value
    // of another type.
    std::optional<QByteArray> data(const QString &key) const;
    // The integer under key; a boolean counts as 0 or 1, a fractional number is
    // truncated, a string holding a decimal integer is read; 0 otherwise.
    qint64 integer(const QString &key) const;
    // The value under key only when it is stored as a boolean.
    std::optional<bool> boolean(const QString &key) const;

    void setData(const QString &key, const QByteArray &value);
    void setInteger(const QString &key, qint64 value);
    void setBoolean(const QString &key, bool value);

    // Replaces the file atomically with every value held. False when the file
    // could not be written; it then keeps its previous contents.
    bool write();

private:
    QString m_filePath;
    QJsonObject m_values;
    bool m_writesBlocked = false;
};
