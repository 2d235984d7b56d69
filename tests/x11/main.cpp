// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char *argv[])
{
    // Never touch the real user's history or settings.
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);

    // The tests change the keyboard layout and lock state of the server they
    // run on, so they refuse any display but the one the wrapper started.
    const QByteArray display = qgetenv("DISPLAY");
    if (!GTEST_FLAG_GET(list_tests) && (display.isEmpty() || display != qgetenv("ZETTLY_XVFB_DISPLAY"))) {
        std::fprintf(stderr, "Run these tests through tests/x11/with-xvfb.sh, not on a desktop's display\n");
        return 1;
    }
    return RUN_ALL_TESTS();
}
