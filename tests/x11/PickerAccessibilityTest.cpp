// SPDX-License-Identifier: GPL-3.0-or-later
// What a screen reader finds of the open picker, read over the accessibility
// bus from the real executable. Runs under with-xvfb.sh --accessibility.
#include "RunningZettly.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

// The application's accessible tree, as accessible-tree.py prints it, of
// what is on the screen; empty while it is not on the bus.
QString showingTree()
{
    QProcess dump;
    dump.start(QStringLiteral(ZETTLY_ACCESSIBLE_TREE), { QStringLiteral("Zettly"), QStringLiteral("--showing") });
    if (!dump.waitForFinished(20000) || dump.exitCode() != 0)
        return {};
    return QString::fromUtf8(dump.readAllStandardOutput());
}

// Opens the picker once zettly is on the bus; the tree then, once it holds
// the line expected.
QString openPickerUntil(const QString &expected)
{
    QString tree;
    if (QTest::qWaitFor([] { return !showingTree().isEmpty(); }, 20000) && XDoTool::pressShortcut())
        std::ignore = QTest::qWaitFor([&] { return (tree = showingTree()).contains(expected); }, 20000);
    return tree;
}

} // namespace

// Empty, the picker says so in words; then its rows, their hints and the
// count are read.
TEST(PickerAccessibility, RowsHintsAndCountAreRead)
{
    RunningZettly zettly;
    zettly.start();
    QString tree = openPickerUntil(QStringLiteral("label 'Aucune copie pour le moment'"));
    for (const char *line :
        { "label 'Aucune copie pour le moment'", "label 'Copie quelque chose pour commencer'", "label '0'" })
        EXPECT_TRUE(tree.contains(QString::fromUtf8(line))) << line << "\n" << tree.toStdString();
    EXPECT_FALSE(tree.contains(QStringLiteral("list item"))) << tree.toStdString();
    ASSERT_TRUE(XDoTool::pressShortcut());

    ASSERT_TRUE(zettly.waitUntilRecording());
    XClip::copy("première copie");
    ASSERT_TRUE(zettly.waitForNewest(QStringLiteral("première copie")));
    XClip::copy("seconde copie");
    ASSERT_TRUE(zettly.waitForNewest(QStringLiteral("seconde copie")));

    tree = openPickerUntil(QStringLiteral("list item 'seconde copie, "));
    const QString count = QStringLiteral("label '%1'").arg(zettly.savedTexts().size());
    for (const QString &line : { QStringLiteral("list item 'première copie, "), QStringLiteral("text 'Rechercher…'"),
             QStringLiteral("label '↩'"), QStringLiteral("label 'Coller'"), QStringLiteral("label 'Space'"),
             QStringLiteral("label 'Épingler'"), QStringLiteral("label '⌫'"), QStringLiteral("label 'Supprimer'"),
             count, QStringLiteral("push button 'Préférences…'") })
        EXPECT_TRUE(tree.contains(line)) << line.toStdString() << "\n" << tree.toStdString();
}
