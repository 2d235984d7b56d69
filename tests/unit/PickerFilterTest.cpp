// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipItem.h"
#include "SearchIndex.h"
#include "TestFolder.h"

using namespace Qt::StringLiterals;

namespace {

ClipItem text(const QString &preview, std::optional<QString> fullText = std::nullopt)
{
    return { .kind = ClipKind::Text, .preview = preview, .fullText = fullText ? fullText : preview };
}

QStringList found(const QList<ClipItem> &items, const QString &query)
{
    SearchIndex index;
    QStringList previews;
    for (const qsizetype row : index.matchingRows(items, query))
        previews.append(items[row].preview);
    return previews;
}

} // namespace

TEST(PickerFilter, LowerCasesBothSidesAndFindsOneContiguousRun)
{
    const QString precomposed = u"café"_s;
    const QString decomposed = u"cafe\u0301 noir"_s;
    const ClipItem file { .kind = ClipKind::File,
        .preview = u"rapport.pdf"_s,
        .filePaths = QStringList { u"/home/ana/Projets/rapport.pdf"_s } };
    const ClipItem fromTerminal {
        .kind = ClipKind::Text, .preview = u"ls"_s, .fullText = u"ls"_s, .sourceApp = u"org.gnome.Terminal"_s
    };
    const QList<ClipItem> items { text(u"Hello World"_s), text(precomposed), text(u"cafe"_s), text(decomposed),
        text(u"STRAẞE"_s), text(u"hello  world"_s), text(u"short"_s, u"short, then past the preview: needle"_s), file,
        fromTerminal, text(u"no-space"_s) };

    struct Row {
        const char *name;
        QString query;
        QStringList expected;
    };
    const QList<Row> rows {
        { "empty query keeps all, in store order", {}, found(items, u""_s) },
        { "case folded both ways", u"WORLD"_s, { u"Hello World"_s, u"hello  world"_s } },
        { "capital accented letter finds the small one only", u"CAFÉ"_s, { precomposed, decomposed } },
        { "plain letter does not find the accented one", u"cafe"_s, { u"cafe"_s } },
        { "combining accent finds the precomposed letter", u"e\u0301"_s, { precomposed, decomposed } },
        { "full lower-case mapping", u"straße"_s, { u"STRAẞE"_s } },
        { "a single space is a query", u" "_s, { u"Hello World"_s, decomposed, u"hello  world"_s, u"short"_s } },
        { "two words need exactly that space", u"hello world"_s, { u"Hello World"_s } },
        { "full text past the preview", u"NEEDLE"_s, { u"short"_s } },
        { "a path found only in the file paths", u"projets"_s, { u"rapport.pdf"_s } },
        { "the source application is not searched", u"terminal"_s, {} },
    };
    ASSERT_EQ(rows[0].expected.size(), items.size());
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(found(items, row.query), row.expected);
    }
}
