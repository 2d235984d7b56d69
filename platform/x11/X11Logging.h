// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

// What the X11 parts say about the display: quiet unless asked for with
// QT_LOGGING_RULES="zettly.x11.debug=true".
Q_DECLARE_LOGGING_CATEGORY(lcX11)
