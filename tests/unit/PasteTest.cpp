// SPDX-License-Identifier: GPL-3.0-or-later
#include "Paste.h"
#include "PasteboardFixture.h"
#include "PasteboardTypes.h"

class PasteTest : public PasteboardFixture {
protected:
    PasteTest() { startWatcher(); }

    // Pastes over another program's copy; every paste, whatever it writes,
    // must leave its change marked as our own.
    void paste(const ClipItem &item)
    {
        pasteboard.copyText(u"someone else's"_s);
        const qint64 before = pasteboard.changeCount();
        Paste::putOnPasteboard(item, store, *watcher);
        EXPECT_GT(pasteboard.changeCount(), before);
        EXPECT_EQ(watcher->ownWriteCount(), pasteboard.changeCount());
    }
};

TEST_F(PasteTest, TextLinkAndColourArePlainText)
{
    const QString longText = QString(1000, u'x');
    struct Row {
        const char *name;
        ClipItem item;
        QString written;
    };
    const QList<Row> rows {
        { "long text", { .kind = ClipKind::Text, .preview = longText.left(200), .fullText = longText }, longText },
        { "text without full text", { .kind = ClipKind::Text, .preview = u"only preview"_s }, u"only preview"_s },
        { "link",
            { .kind = ClipKind::Url, .preview = u"HTTPS://Example.org"_s, .fullText = u"HTTPS://Example.org/x"_s },
            u"HTTPS://Example.org/x"_s },
        { "colour", { .kind = ClipKind::Color, .preview = u"#FF8800"_s, .fullText = u"ignored"_s }, u"#FF8800"_s },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        paste(row.item);
        EXPECT_EQ(pasteboard.types(), QStringList { PasteboardTypes::string });
        EXPECT_EQ(pasteboard.string(PasteboardTypes::string), row.written);
    }
}

TEST_F(PasteTest, FilesAreOfferedToBrowsersAndFileManagers)
{
    const QStringList paths { u"/home/ana/z.txt"_s, u"/home/ana/Mon résumé.odt"_s, u"/tmp/a#b"_s };
    paste({ .kind = ClipKind::File, .preview = u"3 fichiers"_s, .filePaths = paths });

    QStringList types = pasteboard.types();
    types.sort();
    EXPECT_EQ(types, (QStringList { PasteboardTypes::uriList, PasteboardTypes::copiedFiles }));
    QStringList read;
    for (const QUrl &url : pasteboard.urls())
        read.append(url.toLocalFile());
    EXPECT_EQ(read, paths);
    EXPECT_EQ(pasteboard.data(PasteboardTypes::copiedFiles),
        QByteArray("copy\nfile:///home/ana/z.txt\nfile:///home/ana/Mon%20r%C3%A9sum%C3%A9.odt\nfile:///tmp/a%23b"));

    for (const auto &none : { std::optional<QStringList>(), std::optional<QStringList>(QStringList()) }) {
        paste({ .kind = ClipKind::File, .preview = u"0 fichiers"_s, .filePaths = none });
        EXPECT_TRUE(pasteboard.types().isEmpty());
    }
}

TEST_F(PasteTest, ImageIsThePngFileOrNothing)
{
    const QByteArray png = encoded(picture(3, 3), "png");
    const QString name = u"6F1C2B7E-0A3D-4C55-9E21-7B8D9A0C1E2F.png"_s;
    writeAll(store.imagesDirPath() + u'/' + name, png);
    ClipItem image { .kind = ClipKind::Image, .preview = u"Image 3×3"_s, .imageRelPath = name };

    paste(image);
    EXPECT_EQ(pasteboard.types(), QStringList { PasteboardTypes::png });
    EXPECT_EQ(pasteboard.data(PasteboardTypes::png), png);

    ASSERT_TRUE(QFile::remove(store.imagePath(image)));
    paste(image);
    EXPECT_TRUE(pasteboard.types().isEmpty());

    image.imageRelPath.reset();
    paste(image);
    EXPECT_TRUE(pasteboard.types().isEmpty());
}
