// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// Files that hold what the user copied: readable by their owner only, and
// never left half-written.
namespace PrivateFiles {

// Creates the folder and its missing parents, and makes it 0700 whatever the
// umask. Returns false when the folder does not exist afterwards.
bool ensureFolder(const QString &path);

// Replaces the file's contents in one step: a temporary file
// "<name>.saving-XXXXXX" in the same folder, created 0600, written, flushed to
// disk, then renamed over the old one. On failure the previous contents stay
// in place and errorText says why.
bool writeAtomically(const QString &path, const QByteArray &contents, QString *errorText = nullptr);

// Deletes the temporary files of writes that were killed half-way. Only names
// this code makes are touched.
void removeInterruptedWrites(const QString &path);

// Moves a file that could not be read or decoded out of the way, to
// "<name>.unreadable-<UTC date and time>", so that the next save cannot
// destroy it. A rename needs no free space, unlike a copy. Returns the new
// path, or an empty string when the file could not be moved.
QString moveAsideUnreadable(const QString &path);

} // namespace PrivateFiles
