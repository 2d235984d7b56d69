// SPDX-License-Identifier: GPL-3.0-or-later
#include "OtherClient.h"
#include "RunningZettly.h"
#include "TestPrograms.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// The real executable under a window manager, driven as a person would:
// three copies, then the picker over a text window of another process.
namespace {

// The pointer sits right of the text window, so the panel does not cover it.
constexpr QPoint pointer { 700, 150 };
// The panel's rows: below the 28 px search field with its margins, the
// divider and the list's inset; all of one height.
constexpr int firstRowTop = 10 + 28 + 6 + 1 + 3;
constexpr int rowHeight = 52;

const QString first = QStringLiteral("pomme de terre");
const QString second = QStringLiteral("Bonjour tout le monde");
// Its last word lies past the 200 characters of the list's preview.
const QString third = QString(QStringLiteral("lorem ipsum ")).repeated(20) + QStringLiteral("zanzibar");

class PickerEndToEnd : public ::testing::Test {
protected:
    // Rows, newest first: third, second, first.
    void start(const QByteArray &settings = {})
    {
        if (!settings.isEmpty()) {
            ASSERT_TRUE(zettly.writeSettings(settings));
        }
        app = &zettly.start();
        ASSERT_TRUE(zettly.waitUntilRecording());
        for (const QString &text : { first, second, third }) {
            XClip::copy(text.toUtf8());
            ASSERT_TRUE(zettly.waitForNewest(text));
        }
        ASSERT_TRUE(target.start());
    }

    bool openPanel()
    {
        if (!XDoTool::moveTo(pointer) || !XDoTool::pressShortcut())
            return false;
        // Keys pressed before the panel has the focus go elsewhere.
        return eventually([&] {
            panel = panelOf(display, *app);
            return panel && display.cardinals(display.inputFocus(), "_NET_WM_PID").value(0) == app->processId();
        });
    }

    bool panelGone() const
    {
        return eventually([&] { return !panelOf(display, *app); });
    }

    QPoint rowCenter(int row) const
    {
        return panel->topLeft() + QPoint(panel->width() / 2, firstRowTop + rowHeight * row + rowHeight / 2);
    }

    // Types into the window the focus went back to: what it then holds
    // shows whether anything was pasted before.
    void expectNothingPastedAfter(const QString &before)
    {
        ASSERT_TRUE(target.waitForFocus());
        ASSERT_TRUE(XDoTool::type(QStringLiteral("x")));
        EXPECT_TRUE(target.waitForText(before + QStringLiteral("x"))) << target.text().toStdString();
    }

    bool clipboardHolds(const QString &text) const
    {
        return eventually([&] { return XClip::paste() == text.toUtf8(); });
    }

    RunningZettly zettly;
    QProcess *app = nullptr;
    TextTarget target;
    OtherClient display;
    std::optional<QRect> panel;
};

TEST_F(PickerEndToEnd, PastesTheChosenEntryIntoTheWindowBefore)
{
    start();
    const QByteArray history = zettly.historyFile();
    const struct {
        const char *name;
        QStringList typed;
        QStringList keys;
        std::optional<int> clickedRow;
        QString pasted;
    } rows[] = {
        { "typed filter", { QStringLiteral("terre") }, { QStringLiteral("Return") }, {}, first },
        { "word past the preview", { QStringLiteral("zanzibar") }, { QStringLiteral("Return") }, {}, third },
        { "arrows", {},
            { QStringLiteral("Down"), QStringLiteral("Down"), QStringLiteral("Up"), QStringLiteral("Return") }, {},
            second },
        { "keypad Enter with Shift", {}, { QStringLiteral("Down"), QStringLiteral("shift+KP_Enter") }, {}, second },
        { "click on a row", {}, {}, 2, first },
    };
    QString expected;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(openPanel());
        for (const QString &text : row.typed)
            ASSERT_TRUE(XDoTool::type(text));
        if (!row.keys.isEmpty()) {
            ASSERT_TRUE(XDoTool::key(row.keys));
        }
        if (row.clickedRow) {
            ASSERT_TRUE(XDoTool::click(rowCenter(*row.clickedRow)));
        }
        expected += row.pasted;
        EXPECT_TRUE(target.waitForText(expected)) << target.text().toStdString();
        EXPECT_TRUE(panelGone());
        EXPECT_TRUE(clipboardHolds(row.pasted));
    }
    // Pasting records nothing and moves nothing.
    EXPECT_EQ(zettly.historyFile(), history);
}

TEST_F(PickerEndToEnd, EscapeAndCopyOnlyPasteNothing)
{
    start();
    ASSERT_TRUE(openPanel());
    ASSERT_TRUE(XDoTool::key({ QStringLiteral("Escape") }));
    EXPECT_TRUE(panelGone());
    expectNothingPastedAfter({});

    // The second row's menu: "Coller", "Épingler", "Copier sans coller".
    ASSERT_TRUE(openPanel());
    ASSERT_TRUE(XDoTool::click(rowCenter(1), 3));
    ASSERT_TRUE(XDoTool::key(
        { QStringLiteral("Down"), QStringLiteral("Down"), QStringLiteral("Down"), QStringLiteral("Return") }));
    EXPECT_TRUE(clipboardHolds(second));
    EXPECT_TRUE(panelOf(display, *app));

    ASSERT_TRUE(XDoTool::key({ QStringLiteral("Escape") }));
    EXPECT_TRUE(panelGone());
    expectNothingPastedAfter(QStringLiteral("x"));
}

// lxterminal pastes the clipboard on Ctrl+Shift+V; Ctrl+V would type ^V.
TEST_F(PickerEndToEnd, PastesIntoATerminal)
{
    start();
    QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("typed"));
    QProcess terminal;
    terminal.start(QStringLiteral("lxterminal"),
        { QStringLiteral("--no-remote"), QStringLiteral("--geometry=60x10"), QStringLiteral("-e"),
            QStringLiteral("sh -c 'stty -icanon -echo; exec cat > %1'").arg(output) });
    // The window manager focuses the new window; cat then listens.
    ASSERT_TRUE(eventually([&] { return QFile::exists(output); }));
    ASSERT_TRUE(target.waitForText({}));
    ASSERT_TRUE(eventually([&] { return !display.visibleWindowsOf(terminal.processId()).isEmpty(); }));

    ASSERT_TRUE(openPanel());
    ASSERT_TRUE(XDoTool::type(QStringLiteral("Bonjour")));
    ASSERT_TRUE(XDoTool::key({ QStringLiteral("Return") }));
    QFile typed(output);
    EXPECT_TRUE(eventually([&] {
        typed.open(QIODevice::ReadOnly);
        const QByteArray bytes = typed.readAll();
        typed.close();
        return bytes == second.toUtf8();
    }));
    terminal.terminate();
    terminal.waitForFinished();
}

} // namespace
