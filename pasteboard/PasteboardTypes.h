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

// Markers that password managers and other careful writers add.
inline const QString concealed = QStringLiteral("org.nspasteboard.ConcealedType");
inline const QString transient = QStringLiteral("org.nspasteboard.TransientType");
// Holds "secret" when set by a KDE-style password manager.
inline const QString passwordManagerHint = QStringLiteral("x-kde-passwordManagerHint");

// Every type whose bytes capture may read, in the order capture tries them.
inline const QStringList captured = {passwordManagerHint, uriList, png, tiff, string};

} // namespace PasteboardTypes
