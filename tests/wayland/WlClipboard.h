// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// wl-clipboard's tools, as another program on the session's clipboard.
namespace WlClipboard {

// Offers bytes under one type, as wl-copy does; true once it serves them.
bool copy(const QByteArray &bytes, const QString &type = QStringLiteral("text/plain"));
// What a paste of that type gets; nothing when the clipboard is empty or
// does not offer it.
std::optional<QByteArray> paste(const QString &type = QStringLiteral("text/plain"));

} // namespace WlClipboard
