// SPDX-License-Identifier: GPL-3.0-or-later
#include "ContentView.h"
#include "ClipListModel.h"
#include "PanelState.h"
#include "PasteboardFixture.h"
#include "PasteboardTypes.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>

class ContentViewTest : public PasteboardFixture {
protected:
    ContentViewTest() { startWatcher(); }

    // A picker on a history of its own: alpha (newest), beta, gamma.
    std::unique_ptr<ContentView> picker(
        const QString &name, const QStringList &values = { u"gamma"_s, u"beta"_s, u"alpha"_s })
    {
        stores.push_back(std::make_unique<ClipboardStore>(settings, path(name)));
        for (const QString &value : values)
            stores.back()->add({ .kind = ClipKind::Text, .preview = value, .fullText = value + u" in full"_s });
        auto view = std::make_unique<ContentView>(*stores.back(), settings);
        view->setWatcher(watcher.get());
        view->show();
        return view;
    }

    static QLineEdit &field(const ContentView &view) { return *view.findChild<QLineEdit *>(); }

    static void press(ContentView &view, const QList<QKeyCombination> &keys)
    {
        for (const QKeyCombination key : keys)
            QTest::keyClick(&field(view), key.key(), key.keyboardModifiers());
    }

    // Typed text reaches the query one turn of the event loop later.
    static bool queryFollowed(const ContentView &view)
    {
        return QTest::qWaitFor([&] { return view.state().query() == field(view).text(); });
    }

    QString pasted() const { return pasteboard.string(PasteboardTypes::string).value_or(QString()); }

    std::vector<std::unique_ptr<ClipboardStore>> stores;
};

TEST_F(ContentViewTest, KeysActWhateverTheModifiers)
{
    struct Row {
        const char *name;
        QString typed;
        QList<QKeyCombination> keys;
        qint64 selection;
        QStringList previews;
        QString field;
        QString pasted;
    };
    const QStringList all { u"alpha"_s, u"beta"_s, u"gamma"_s };
    const QList<Row> rows {
        { "down twice", {}, { Qt::Key_Down, Qt::ShiftModifier | Qt::Key_Down }, 2, all, {}, {} },
        { "no wrap at the end", {}, { Qt::Key_Down, Qt::Key_Down, Qt::Key_Down }, 2, all, {}, {} },
        { "no wrap at the top", {}, { Qt::ControlModifier | Qt::Key_Up }, 0, all, {}, {} },
        { "return pastes the full text", {}, { Qt::Key_Down, Qt::ShiftModifier | Qt::Key_Return }, 1, all, {},
            u"beta in full"_s },
        { "keypad enter", {}, { Qt::KeypadModifier | Qt::Key_Enter }, 0, all, {}, u"alpha in full"_s },
        { "space pins while the field is empty", {}, { Qt::Key_Down, Qt::AltModifier | Qt::Key_Space }, 1,
            { u"beta*"_s, u"alpha"_s, u"gamma"_s }, {}, {} },
        { "backspace deletes while the field is empty", {}, { Qt::ControlModifier | Qt::Key_Backspace }, 0,
            { u"beta"_s, u"gamma"_s }, {}, {} },
        { "space and backspace edit a query", u"a"_s, { Qt::Key_Space, Qt::Key_Backspace }, 0, all, u"a"_s, {} },
        { "backspace right after a letter edits the field", {}, { Qt::Key_A, Qt::Key_Backspace }, 0, all, {}, {} },
        { "typing puts the selection back on the first row", {}, { Qt::Key_Down, Qt::Key_A }, 0, all, u"a"_s, {} },
        { "the query narrows what return pastes", u"mm"_s, { Qt::Key_Return }, 0, all, u"mm"_s, u"gamma in full"_s },
        { "no match: return does nothing", u"zz"_s, { Qt::Key_Return }, 0, all, u"zz"_s, {} },
    };
    int number = 0;
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        pasteboard.copyText({});
        const auto view = picker(u"row%1"_s.arg(++number));
        QTest::keyClicks(&field(*view), row.typed);
        EXPECT_TRUE(queryFollowed(*view));
        press(*view, row.keys);
        EXPECT_TRUE(queryFollowed(*view));
        EXPECT_EQ(view->state().selection(), row.selection);
        EXPECT_EQ(::previews(stores.back()->items()), row.previews);
        EXPECT_EQ(field(*view).text(), row.field);
        EXPECT_EQ(pasted(), row.pasted);
    }
}

TEST_F(ContentViewTest, DeletingTheLastRowLeavesNoRowSelectedUntilAMove)
{
    const auto view = picker(u"h"_s);
    press(*view, { Qt::Key_Down, Qt::Key_Down, Qt::Key_Backspace });
    EXPECT_EQ(view->filtered().size(), 2);
    EXPECT_EQ(view->state().selection(), 2);
    press(*view, { Qt::Key_Return, Qt::Key_Space, Qt::Key_Backspace });
    EXPECT_EQ(view->filtered().size(), 2);
    EXPECT_EQ(pasted(), QString());
    press(*view, { Qt::Key_Up });
    EXPECT_EQ(view->state().selection(), 1);
}

TEST_F(ContentViewTest, EachShowingStartsWithAnEmptyFieldOnTheFirstRow)
{
    const auto view = picker(u"h"_s);
    QTest::keyClicks(&field(*view), u"a"_s);
    ASSERT_TRUE(queryFollowed(*view));
    press(*view, { Qt::Key_Down });
    ASSERT_EQ(view->state().selection(), 1);
    view->hide();
    view->show();
    EXPECT_EQ(field(*view).text(), QString());
    EXPECT_EQ(view->state().query(), QString());
    EXPECT_EQ(view->state().selection(), 0);
    EXPECT_EQ(view->filtered().size(), 3);
}

TEST_F(ContentViewTest, SaysWhyTheListIsEmptyAndCountsTheWholeHistory)
{
    const QStringList hints { u"↩"_s, u"Coller"_s, u"Space"_s, u"Épingler"_s, u"⌫"_s, u"Supprimer"_s };
    struct Row {
        const char *name;
        QStringList history;
        QString query;
        QStringList texts;
    };
    const QList<Row> rows {
        { "entries", { u"a"_s, u"b"_s }, {}, { u"2"_s } },
        { "no match", { u"a"_s, u"b"_s }, u"zz"_s, { u"Aucun résultat"_s, u"2"_s } },
        { "no entries", {}, {}, { u"Aucune copie pour le moment"_s, u"Copie quelque chose pour commencer"_s, u"0"_s } },
    };
    int number = 0;
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const auto view = picker(u"row%1"_s.arg(++number), row.history);
        QTest::keyClicks(&field(*view), row.query);
        ASSERT_TRUE(queryFollowed(*view));
        QStringList texts;
        for (const QLabel *label : view->findChildren<QLabel *>()) {
            if (label->isVisible() && !label->text().isEmpty())
                texts.append(label->text());
        }
        texts.sort();
        QStringList expected = hints + row.texts;
        expected.sort();
        EXPECT_EQ(texts, expected);
    }
}
