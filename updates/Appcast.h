// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppcastRelease.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

// Reads an update feed: an RSS 2.0 channel whose items carry a release.
namespace Appcast {

// The address as an https web page with a host, or an empty one: only a
// download nobody on the way can swap is ever offered to the user, never a
// plain http, file: or other address.
QUrl webUrl(QStringView text);

// The namespace of the version and short version, as item elements or as
// attributes of the enclosure.
inline const QString releaseNamespace = QStringLiteral("http://www.andymatuschak.org/xml-namespaces/sparkle");

// The newest release in feed by version, not by position. An item counts when
// it has a version (the enclosure's attribute, else the item's element) and
// an https link (the enclosure's url, else the item's link). A feed that is
// not well-formed XML, has no RSS channel or no such item gives nothing: a
// truncated download is never half-trusted.
std::optional<AppcastRelease> newestRelease(const QByteArray &feed);

} // namespace Appcast
