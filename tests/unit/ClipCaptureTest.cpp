// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipCapture.h"
#include "CaptureLimits.h"
#include "PasteboardFixture.h"
#include "PasteboardTypes.h"
#include "TextPreview.h"

#include <QRegularExpression>

namespace {

QByteArray uriList(const QStringList &uris)
{
    return uris.join(u"\r\n").toUtf8() + "\r\n";
}

} // namespace

class ClipCaptureTest : public PasteboardFixture {
protected:
    std::optional<ClipItem> capture(const ClipboardSnapshot &snapshot)
    {
        pasteboard.copy(snapshot);
        return ClipCapture(pasteboard, store.imagesDirPath()).capture(std::nullopt);
    }
};

// Files win only when every URL is a file; a picture that does not decode,
// or is too large, gives way to what else is offered.
TEST_F(ClipCaptureTest, KindFollowsWhatIsOfferedAndUsable)
{
    const QByteArray wide = encoded(picture(CaptureLimits::maxImageSide + 1, 1), "png");
    const QByteArray whole = encoded(picture(40, 40), "png");
    // The header is whole, the pixels are not.
    const QByteArray cutOff = whole.left(whole.size() / 2);
    const QByteArray tiff = encoded(picture(4, 2), "tiff");
    struct Row {
        const char *name;
        ClipboardSnapshot snapshot;
        ClipKind kind;
        QString preview;
        std::optional<QStringList> paths = std::nullopt;
    };
    const QByteArray icon = encoded(picture(16, 16), "png");
    const QList<Row> rows {
        { "one file, with a comment line",
            offer({ { PasteboardTypes::uriList, "# from a file manager\r\nfile:///home/ana/report.pdf\r\n" } }),
            ClipKind::File, u"report.pdf"_s, QStringList { u"/home/ana/report.pdf"_s } },
        { "encoded name", offer({ { PasteboardTypes::uriList, "file:///tmp/Mon%20r%C3%A9sum%C3%A9.odt" } }),
            ClipKind::File, u"Mon résumé.odt"_s, QStringList { u"/tmp/Mon résumé.odt"_s } },
        { "three files in clipboard order",
            offer({ { PasteboardTypes::uriList,
                uriList({ u"file:///c/z.txt"_s, u"file:///a.txt"_s, u"file:///b"_s }) } }),
            ClipKind::File, u"3 fichiers"_s, QStringList { u"/c/z.txt"_s, u"/a.txt"_s, u"/b"_s } },
        { "folder", offer({ { PasteboardTypes::uriList, "file:///home/ana/Photos/\n" } }), ClipKind::File,
            u"Photos"_s },
        { "root folder", offer({ { PasteboardTypes::uriList, "file:///" } }), ClipKind::File, u"/"_s,
            QStringList { u"/"_s } },
        { "file with its icon and name",
            offer({ { PasteboardTypes::uriList, "file:///home/ana/report.pdf" }, { PasteboardTypes::png, icon },
                { PasteboardTypes::string, "report.pdf" } }),
            ClipKind::File, u"report.pdf"_s, QStringList { u"/home/ana/report.pdf"_s } },
        { "web link before a file",
            offer({ { PasteboardTypes::uriList, uriList({ u"https://example.org/a"_s, u"file:///tmp/a.txt"_s }) } }),
            ClipKind::Url, u"https://example.org/a"_s },
        { "file manager's list alone, cut",
            offer({ { PasteboardTypes::copiedFiles, "cut\nfile:///home/ana/a.txt\nfile:///home/ana/b%20c.txt" } }),
            ClipKind::File, u"2 fichiers"_s, QStringList { u"/home/ana/a.txt"_s, u"/home/ana/b c.txt"_s } },
        { "file manager's list alone, copied", offer({ { PasteboardTypes::copiedFiles, "copy\nfile:///srv/x.odt" } }),
            ClipKind::File, u"x.odt"_s, QStringList { u"/srv/x.odt"_s } },
        { "file before a web link",
            offer({ { PasteboardTypes::uriList, uriList({ u"file:///tmp/a.txt"_s, u"https://example.org/a"_s }) },
                { PasteboardTypes::string, "notes" } }),
            ClipKind::Text, u"notes"_s },
        { "garbage PNG, good TIFF",
            offer({ { PasteboardTypes::png, "not a picture" }, { PasteboardTypes::tiff, tiff } }), ClipKind::Image,
            u"Image 4×2"_s },
        { "garbage PNG and TIFF, link",
            offer({ { PasteboardTypes::png, "\x89PNG\r\n\x1a\ngarbage" }, { PasteboardTypes::tiff, "II*\0garbage" },
                { PasteboardTypes::string, "https://example.org" } }),
            ClipKind::Url, u"https://example.org"_s },
        { "PNG header whose pixels do not decode, good TIFF",
            offer({ { PasteboardTypes::png, cutOff }, { PasteboardTypes::tiff, tiff } }), ClipKind::Image,
            u"Image 4×2"_s },
        { "PNG header whose pixels do not decode, text",
            offer({ { PasteboardTypes::png, cutOff }, { PasteboardTypes::string, "légende" } }), ClipKind::Text,
            u"légende"_s },
        { "PNG wider than the bound, text",
            offer({ { PasteboardTypes::png, wide }, { PasteboardTypes::string, "caption" } }), ClipKind::Text,
            u"caption"_s },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const auto clip = capture(row.snapshot);
        ASSERT_TRUE(clip);
        EXPECT_EQ(clip->kind, row.kind);
        EXPECT_EQ(clip->preview, row.preview);
        if (row.paths) {
            EXPECT_EQ(clip->filePaths, row.paths);
        }
        EXPECT_EQ(clip->imageRelPath.has_value(), row.kind == ClipKind::Image);
        EXPECT_EQ(clip->filePaths.has_value(), row.kind == ClipKind::File);
    }
    EXPECT_EQ(imageFiles().size(), 2);

    QStringList uris;
    for (int i = 0; i < 10000; ++i)
        uris.append(u"file:///home/ana/scans/page%1.png"_s.arg(i));
    const auto many = capture(offer({ { PasteboardTypes::uriList, uriList(uris) } }));
    ASSERT_TRUE(many && many->filePaths);
    EXPECT_EQ(many->preview, u"10000 fichiers"_s);
    ASSERT_EQ(many->filePaths->size(), 10000);
    EXPECT_EQ(many->filePaths->at(9999), u"/home/ana/scans/page9999.png"_s);
}

TEST_F(ClipCaptureTest, PngIsStoredAsItCameAndTiffIsConverted)
{
    const QImage image = picture(5, 3);
    const QByteArray png = encoded(image, "png");
    const QByteArray tiff = encoded(image, "tiff");
    ASSERT_FALSE(tiff.isEmpty()) << "no TIFF codec";

    const auto fromPng = capture(offer({ { PasteboardTypes::tiff, tiff }, { PasteboardTypes::png, png },
        { PasteboardTypes::string, "https://example.org/picture.png" } }));
    ASSERT_TRUE(fromPng && fromPng->imageRelPath);
    EXPECT_EQ(fromPng->kind, ClipKind::Image);
    EXPECT_EQ(fromPng->preview, u"Image 5×3"_s);
    EXPECT_FALSE(fromPng->fullText);
    EXPECT_TRUE(QRegularExpression(u"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.png$"_s)
                    .match(*fromPng->imageRelPath)
                    .hasMatch())
        << fromPng->imageRelPath->toStdString();
    EXPECT_EQ(readAll(store.imagePath(*fromPng)), png);
    EXPECT_EQ(modeOf(store.imagePath(*fromPng)), 0600u);

    const auto fromTiff = capture(offer({ { PasteboardTypes::tiff, tiff } }));
    ASSERT_TRUE(fromTiff && fromTiff->imageRelPath);
    EXPECT_EQ(fromTiff->preview, u"Image 5×3"_s);
    EXPECT_NE(fromTiff->imageRelPath, fromPng->imageRelPath);
    QImage converted;
    ASSERT_TRUE(converted.loadFromData(readAll(store.imagePath(*fromTiff)), "png"));
    EXPECT_EQ(converted.convertToFormat(QImage::Format_ARGB32), image);
    EXPECT_EQ(imageFiles().size(), 2);
}

TEST_F(ClipCaptureTest, LinksNeedAWebSchemeAndKeepTheirText)
{
    const QString longLink = u"https://example.org/"_s + QString(300, u'a');
    struct Row {
        QString text;
        ClipKind kind;
        QString preview;
    };
    const QList<Row> rows {
        { u"HTTPS://EXAMPLE.ORG/Page"_s, ClipKind::Url, u"HTTPS://EXAMPLE.ORG/Page"_s },
        { u"hTtP://example.org"_s, ClipKind::Url, u"hTtP://example.org"_s },
        { u"https://example.org/a\nb"_s, ClipKind::Url, u"https://example.org/a\nb"_s },
        { longLink, ClipKind::Url, longLink.left(200) },
        { u"ftp://example.org/file"_s, ClipKind::Text, u"ftp://example.org/file"_s },
        { u"mailto:ana@example.org"_s, ClipKind::Text, u"mailto:ana@example.org"_s },
        { u"example.org"_s, ClipKind::Text, u"example.org"_s },
        { u"file:///etc/hosts"_s, ClipKind::Text, u"file:///etc/hosts"_s },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.text.toStdString());
        const auto clip = capture(offer({ { PasteboardTypes::string, row.text.toUtf8() } }));
        ASSERT_TRUE(clip);
        EXPECT_EQ(clip->kind, row.kind);
        EXPECT_EQ(clip->preview, row.preview);
        EXPECT_EQ(clip->fullText, row.text);
    }

    // A browser's link offered alone: UTF-16, the URL then the title.
    const auto utf16 = [](const QString &text, bool bom) {
        const QString marked = bom ? QChar(0xFEFF) + text : text;
        return QByteArray(reinterpret_cast<const char *>(marked.utf16()), marked.size() * 2);
    };
    for (const bool bom : { false, true }) {
        const auto clip
            = capture(offer({ { PasteboardTypes::mozUrl, utf16(u"https://example.org/é\nLa page"_s, bom) } }));
        ASSERT_TRUE(clip);
        EXPECT_EQ(clip->kind, ClipKind::Url);
        EXPECT_EQ(clip->fullText, u"https://example.org/é"_s);
    }
    EXPECT_FALSE(capture(offer({ { PasteboardTypes::mozUrl, utf16(u"file:///tmp/x\nx"_s, false) } })));
}

TEST_F(ClipCaptureTest, TextPreviewIsOneLineOfTwoHundredCharacters)
{
    QString text;
    while (text.size() < 1000)
        text += u"ab\tc\r\nde\n"_s;
    const auto clip = capture(offer({ { PasteboardTypes::string, text.toUtf8() } }));
    ASSERT_TRUE(clip);
    EXPECT_EQ(clip->kind, ClipKind::Text);
    EXPECT_EQ(clip->fullText, text);
    // The line feed of CR LF becomes a space, which leaves two characters.
    EXPECT_EQ(clip->preview, QString(text).replace(u'\n', u' ').left(200));

    EXPECT_FALSE(capture(offer({ { PasteboardTypes::string, {} } })));
    EXPECT_FALSE(capture(offer({ { PasteboardTypes::uriList, "# nothing" } })));
    const auto space = capture(offer({ { PasteboardTypes::string, " " } }));
    ASSERT_TRUE(space);
    EXPECT_EQ(space->preview, u" "_s);
    EXPECT_EQ(space->fullText, u" "_s);
    const auto invalid = capture(offer({ { PasteboardTypes::string, "caf\xC3 \xFF" } }));
    ASSERT_TRUE(invalid);
    EXPECT_EQ(invalid->fullText, u"caf\uFFFD \uFFFD"_s);

    // Megabytes take another way through decoding: same text, same preview;
    // 20 MiB is recorded too.
    QByteArray big = "\xEF\xBB\xBF" + QByteArray(300, '\n');
    while (big.size() < 20 * 1024 * 1024)
        big += "ligne é \xF0\x9F\x91\x8D\xFF\r\n";
    const auto large = capture(offer({ { PasteboardTypes::string, big } }));
    ASSERT_TRUE(large);
    EXPECT_EQ(large->fullText, QString::fromUtf8(big));
    EXPECT_EQ(large->preview, QString(200, u' '));
}

TEST_F(ClipCaptureTest, PreviewNeverSplitsACharacter)
{
    const QList<QString> characters {
        u"e\u0301\u0323"_s, // a letter with two combining marks
        u"\U0001F1EB\U0001F1F7"_s, // a flag
        u"\U0001F44D\U0001F3FD"_s, // thumbs up, medium skin tone
        u"\U0001F469\u200D\U0001F469\u200D\U0001F467"_s, // a family joined by ZWJ
        u"\u1100\u1161\u11A8"_s, // a Hangul syllable from jamo
    };
    for (const QString &character : characters) {
        SCOPED_TRACE(character.toStdString());
        EXPECT_EQ(TextPreview::cut(character.repeated(201)), character.repeated(200));
        const QString mixed = QString(199, u'x') + character + u'y';
        EXPECT_EQ(TextPreview::cut(mixed), QString(199, u'x') + character);
    }
}

// The reader leaves data above the bound out, so the type comes without
// bytes; the bound counts UTF-8 bytes, also for a link.
TEST_F(ClipCaptureTest, OversizedTextIsNotTaken)
{
    ClipboardSnapshot leftOut;
    leftOut.types = QStringList { PasteboardTypes::string };
    EXPECT_FALSE(capture(leftOut));
    const QByteArray link = "https://example.org/" + QByteArray(CaptureLimits::maxTextBytes, 'a');
    EXPECT_FALSE(capture(offer({ { PasteboardTypes::string, link } })));
}
