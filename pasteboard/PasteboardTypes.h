// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// The formats that capture reads and paste-back writes.
namespace PasteboardTypes {

inline const QString png = QStringLiteral("image/png");
inline const QString tiff = QStringLiteral("image/tiff");
// UTF-8 text.
inline const QString string = QStringLiteral("text/plain");
// One or more URLs, one per line (RFC 2483).
inline const QString uriList = QStringLiteral("text/uri-list");
// What GNOME-style file managers paste files from: "copy" or "cut", then
// the URIs, one per line, no trailing newline.
inline const QString copiedFiles = QStringLiteral("x-special/gnome-copied-files");
// A browser's link: UTF-16, the URL, a line feed, the page's title.
inline const QString mozUrl = QStringLiteral("text/x-moz-url");

// Markers that password managers and other careful writers add.
inline const QString concealed = QStringLiteral("org.nspasteboard.ConcealedType");
inline const QString transient = QStringLiteral("org.nspasteboard.TransientType");
// Holds "secret" when set by a KDE-style password manager.
inline const QString passwordManagerHint = QStringLiteral("x-kde-passwordManagerHint");

// Every type whose bytes capture may read, the markers first. The file
// manager's list and the browser's link are only read when offered without
// the more common types that stand for the same.
inline const QStringList captured = { passwordManagerHint, uriList, copiedFiles, png, tiff, mozUrl, string };

} // namespace PasteboardTypes
