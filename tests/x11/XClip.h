// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// Another program on the clipboard: xclip, which keeps serving what it
// copied, INCR transfers included, until someone else takes the selection.
namespace XClip {

// Copies bytes as the given target ("UTF8_STRING" by default, which xclip
// also offers as STRING and TEXT). Returns once the copy is offered.
void copy(const QByteArray &bytes, const QString &target = {});
// What the clipboard's owner gives for a target, or nothing when the owner
// does not offer it. Runs the event loop while it waits.
QByteArray paste(const QString &target = QStringLiteral("UTF8_STRING"));

} // namespace XClip
