// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchIndex.h"
#include "TestFolder.h"

using namespace Qt::StringLiterals;

namespace {

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
    const ClipItem longer {
        .kind = ClipKind::Text, .preview = u"short"_s, .fullText = u"short, then past the preview: needle"_s
    };
    const QList<ClipItem> items { textClip(u"Hello World"_s), textClip(precomposed), textClip(u"cafe"_s),
        textClip(decomposed), textClip(u"STRAẞE"_s), textClip(u"hello  world"_s), longer, file, fromTerminal,
        textClip(u"no-space"_s) };

    struct Row {
        const char *name;
        QString query;
        QStringList expected;
    };
    const QList<Row> rows {
        { "empty query keeps all, in store order", {}, previews(items) },
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
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(found(items, row.query), row.expected);
    }
}
