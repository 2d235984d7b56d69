// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>

#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char *argv[])
{
    ::testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    // They take the session's clipboard over: never a desktop's.
    if (qEnvironmentVariableIsEmpty("ZETTLY_SWAY_SESSION")) {
        std::fprintf(stderr, "Run these tests through tests/wayland/with-sway.sh\n");
        return 1;
    }
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
