// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipRowContent.h"
#include "ClipRowMenu.h"
#include "RelativeAge.h"
#include "TestFolder.h"

#include <QAction>
#include <QDir>

using namespace Qt::StringLiterals;

namespace {

ClipItem files(const QStringList &paths)
{
    return { .kind = ClipKind::File, .preview = paths.value(0), .filePaths = paths };
}

} // namespace

TEST(ClipRow, SubtitleAndBadgeByKindAndExtension)
{
    const QColor invalid;
    const ClipRowContent::Symbol pdf { u"x-office-document-symbolic"_s, QColor::fromRgbF(0.85f, 0.18f, 0.18f) };
    const ClipRowContent::Symbol plain { u"text-x-generic-symbolic"_s, QColor::fromRgbF(0.4f, 0.55f, 0.45f) };
    struct Row {
        const char *name;
        ClipItem item;
        QString subtitle;
        ClipRowContent::Symbol symbol;
    };
    const QList<Row> rows {
        { "text", { .kind = ClipKind::Text, .preview = u"a"_s }, {}, { u"format-justify-left-symbolic"_s, invalid } },
        { "link", { .kind = ClipKind::Url, .preview = u"https://a"_s }, {},
            { u"insert-link-symbolic"_s, QColor(0x3584e4) } },
        { "image", { .kind = ClipKind::Image, .preview = u"Image"_s }, {},
            { u"image-x-generic-symbolic"_s, QColor(0xe03a8c) } },
        { "colour", { .kind = ClipKind::Color, .preview = u"#FF8800"_s }, {},
            { u"applications-graphics-symbolic"_s, QColor(0xff7800) } },
        { "one PDF in capitals: extension looked up in lower case", files({ u"/gone/R.PDF"_s }), u".PDF"_s, pdf },
        { "three PDFs, mixed case", files({ u"/gone/a.pdf"_s, u"/gone/b.PDF"_s, u"/gone/c.pdf"_s }),
            u"3 fichiers · .pdf"_s, pdf },
        { "two kinds of files", files({ u"/gone/a.pdf"_s, u"/gone/b.txt"_s }), u"2 fichiers"_s, pdf },
        { "two files without extension", files({ u"/gone/a"_s, u"/gone/b"_s }), u"2 fichiers"_s, plain },
        { "no extension: no dot, the plain document", files({ u"/gone/Makefile"_s }), {}, plain },
        { "a dot in a folder name is no extension", files({ u"/gone/v1.2/README"_s }), {}, plain },
        { "unknown extension", files({ u"/gone/a.xyz"_s }), u".XYZ"_s, plain },
        { "text file: the secondary colour", files({ u"/gone/notes.txt"_s }), u".TXT"_s,
            { u"text-x-generic-symbolic"_s, invalid } },
        { "shell script", files({ u"/gone/run.zsh"_s }), u".ZSH"_s,
            { u"utilities-terminal-symbolic"_s, QColor::fromRgbF(0.2f, 0.2f, 0.2f) } },
        { "named gray", files({ u"/gone/debian.iso"_s }), u".ISO"_s,
            { u"media-optical-symbolic"_s, QColor(0x9a9996) } },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(ClipRowContent::subtitle(row.item), row.subtitle);
        EXPECT_EQ(ClipRowContent::symbol(row.item).iconName, row.symbol.iconName);
        EXPECT_EQ(ClipRowContent::symbol(row.item).tint, row.symbol.tint);
    }
}

using ClipRowFiles = TestFolder;

TEST_F(ClipRowFiles, FileIconOnlyWhileTheFirstPathExists)
{
    const QString pdf = path(u"Rapport.PDF"_s);
    writeAll(pdf, "%PDF-1.4\n");
    EXPECT_EQ(ClipRowContent::existingFirstPath(files({ pdf, u"/gone/b"_s })), pdf);
    EXPECT_EQ(ClipRowContent::fileIconNames(pdf).value(0), u"application-pdf"_s);
    EXPECT_EQ(ClipRowContent::fileIconNames(QFileInfo(pdf).path()).value(0), u"folder"_s);
    QFile::remove(pdf);
    EXPECT_EQ(ClipRowContent::existingFirstPath(files({ pdf })), std::nullopt);
}

TEST(ClipRow, AgeInWordsWithTheDayBeforeNamed)
{
    const RelativeAge age(u"fr_FR"_s);
    const double now = 800'000'000;
    struct Row {
        double secondsAgo;
        QString expected;
    };
    const QList<Row> rows {
        { 0.4, u"maintenant"_s },
        { 42, u"il y a 42 secondes"_s },
        { 5 * 60 + 59, u"il y a 5 minutes"_s },
        { 3600, u"il y a 1 heure"_s },
        { 86400 + 600, u"hier"_s },
        { 3 * 86400, u"il y a 3 jours"_s },
    };
    for (const Row &row : rows)
        EXPECT_EQ(age.text(now - row.secondsAgo, now), row.expected) << row.secondsAgo;
    EXPECT_EQ(RelativeAge(u"C"_s).text(now - 86400 - 600, now), u"hier"_s);
}

TEST(ClipRow, MenuItemsFollowThePinAndTheFullText)
{
    const auto texts = [](const ClipItem &item) {
        ClipRowMenu menu(item);
        QStringList result;
        for (const QAction *action : menu.actions())
            result.append(action->isSeparator() ? u"—"_s : action->text());
        return result;
    };
    struct Row {
        const char *name;
        ClipItem item;
        QStringList expected;
    };
    const QList<Row> rows {
        { "text", { .kind = ClipKind::Text, .preview = u"a"_s, .fullText = u"a"_s },
            { u"Coller"_s, u"Épingler"_s, u"—"_s, u"Copier sans coller"_s, u"—"_s, u"Supprimer"_s } },
        { "pinned link", { .kind = ClipKind::Url, .preview = u"h"_s, .fullText = u"h"_s, .pinned = true },
            { u"Coller"_s, u"Désépingler"_s, u"—"_s, u"Copier sans coller"_s, u"—"_s, u"Supprimer"_s } },
        { "image", { .kind = ClipKind::Image, .preview = u"Image"_s, .imageRelPath = u"x.png"_s },
            { u"Coller"_s, u"Épingler"_s, u"—"_s, u"Supprimer"_s } },
        { "files", files({ u"/a"_s }), { u"Coller"_s, u"Épingler"_s, u"—"_s, u"Supprimer"_s } },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(texts(row.item), row.expected);
    }
}
