// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QStandardPaths>

#include <gtest/gtest.h>

// Never the real user's history or settings; widgets on Qt's offscreen
// platform, which draws nowhere.
int main(int argc, char *argv[])
{
    QStandardPaths::setTestModeEnabled(true);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
