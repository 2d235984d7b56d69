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

// Replaces the file's contents in one step (temporary file in the same folder,
// flushed, renamed over the old one), with mode 0600. On failure the previous
// contents stay in place and errorText says why.
bool writeAtomically(const QString &path, const QByteArray &contents, QString *errorText = nullptr);

// Deletes what a write killed half-way left next to the file: QSaveFile's
// temporary "<name>.XXXXXX". Such a copy would keep clips the user has since
// deleted. Copies kept by keepUnreadableCopy() are left alone.
void removeInterruptedWrites(const QString &path);

// Copies a file that could not be decoded next to itself, as
// "<name>.unreadable-<UTC date and time>", so that the next save cannot destroy
// it. Returns the copy's path, or an empty string when nothing was copied.
QString keepUnreadableCopy(const QString &path);

} // namespace PrivateFiles
