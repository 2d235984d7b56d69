// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QStringList>

// The user at the keyboard and the mouse, through xdotool (XTest). Each call
// returns once xdotool has finished, the event loop running meanwhile as the
// app's would.
namespace XDoTool {

// Keys by their X names, "ctrl+super+v", "Return", one after the other.
bool key(const QStringList &keys);
bool type(const QString &text);
bool moveTo(QPoint position);
bool click(QPoint position, int button = 1);

} // namespace XDoTool
