// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Logging.h"

Q_LOGGING_CATEGORY(lcX11, "zettly.x11", QtWarningMsg)
