// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <cstdio>

// Qt's xcb platform: an offscreen one keeps a clipboard inside the process.
// The tests change the server's keyboard layout and locks, so they refuse any
// display but the one the wrapper started.
int main(int argc, char *argv[])
{
    QStandardPaths::setTestModeEnabled(true);
    qputenv("QT_QPA_PLATFORM", "xcb");
    ::testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();

    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty() || display != qgetenv("ZETTLY_XVFB_DISPLAY")) {
        std::fprintf(stderr, "Run these tests through tests/x11/with-xvfb.sh, not on a desktop's display\n");
        return 1;
    }
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
