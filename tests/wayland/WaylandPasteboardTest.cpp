// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandPasteboard.h"
#include "WaylandPrograms.h"

#include "CaptureLimits.h"
#include "PasteboardTypes.h"

#include <QBuffer>
#include <QImage>
#include <QMimeData>
#include <QTest>

#include <gtest/gtest.h>

namespace {

bool waitForChange(const Pasteboard &pasteboard, qint64 from)
{
    return QTest::qWaitFor([&] { return pasteboard.changeCount() != from; }, 5000);
}

QByteArray pngBytes()
{
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace

// Another program's copy arrives as one change, text under one name, bytes
// within the capture bounds.
TEST(WaylandPasteboard, ReadsWhatAnotherProgramCopies)
{
    const auto pasteboard = WaylandPasteboard::open();
    ASSERT_TRUE(pasteboard);
    const QByteArray huge(CaptureLimits::maxTextBytes + 1, 'x');
    const struct {
        QByteArray bytes;
        QString offeredAs;
        QString readAs;
        bool kept;
    } copies[] = {
        { "Grüße 🌍\nzweite Zeile", QStringLiteral("text/plain;charset=utf-8"), PasteboardTypes::string, true },
        { "https://exemple.org/page", QStringLiteral("text/plain"), PasteboardTypes::string, true },
        { pngBytes(), PasteboardTypes::png, PasteboardTypes::png, true },
        { "file:///tmp/un%20fichier.txt\r\nfile:///tmp/autre\r\n", PasteboardTypes::uriList, PasteboardTypes::uriList,
            true },
        { huge, QStringLiteral("text/plain"), PasteboardTypes::string, false },
    };
    for (const auto &copy : copies) {
        const qint64 before = pasteboard->changeCount();
        ASSERT_TRUE(WlClipboard::copy(copy.bytes, copy.offeredAs));
        ASSERT_TRUE(waitForChange(*pasteboard, before)) << qPrintable(copy.offeredAs);
        EXPECT_EQ(pasteboard->changeCount(), before + 1);
        EXPECT_EQ(pasteboard->types().count(copy.readAs), 1) << qPrintable(pasteboard->types().join(u' '));
        EXPECT_EQ(pasteboard->data(copy.readAs), copy.kept ? std::optional(copy.bytes) : std::nullopt)
            << qPrintable(copy.offeredAs);
    }
}

// What we write is pasted by others while no window of ours exists, and is
// not reported back to us as another program's copy.
TEST(WaylandPasteboard, ServesItsOwnWritesAndSkipsTheirEcho)
{
    const auto pasteboard = WaylandPasteboard::open();
    ASSERT_TRUE(pasteboard);
    for (const QString &name : { QStringLiteral("text/plain"), QStringLiteral("UTF8_STRING") }) {
        const qint64 before = pasteboard->changeCount();
        auto *mime = new QMimeData;
        mime->setText(QStringLiteral("à coller par ") + name);
        pasteboard->write(mime);
        EXPECT_EQ(pasteboard->changeCount(), before + 1);
        EXPECT_EQ(WlClipboard::paste(name), (QStringLiteral("à coller par ") + name).toUtf8());
        // Our own selection comes back from the compositor at once; it must
        // not read as another change.
        EXPECT_FALSE(QTest::qWaitFor([&] { return pasteboard->changeCount() != before + 1; }, 300));

        ASSERT_TRUE(WlClipboard::copy("après " + name.toUtf8()));
        ASSERT_TRUE(waitForChange(*pasteboard, before + 1));
        EXPECT_EQ(pasteboard->changeCount(), before + 2);
        EXPECT_EQ(pasteboard->data(PasteboardTypes::string), "après " + name.toUtf8());
    }

    const qint64 before = pasteboard->changeCount();
    pasteboard->clearContents();
    EXPECT_EQ(pasteboard->changeCount(), before + 1);
    EXPECT_TRUE(QTest::qWaitFor([] { return !WlClipboard::paste(); }, 5000));
    ASSERT_TRUE(WlClipboard::copy("après l'effacement"));
    ASSERT_TRUE(waitForChange(*pasteboard, before + 1));
    EXPECT_EQ(pasteboard->changeCount(), before + 2);
}

// A copy is read as far as the read scope asked when it was announced: a
// secret's text is not fetched unless everything is.
TEST(WaylandPasteboard, ReadsAsFarAsTheScopeSays)
{
    const auto writer = WaylandPasteboard::open();
    const auto reader = WaylandPasteboard::open();
    ASSERT_TRUE(writer && reader);
    const struct {
        ReadScope scope;
        QByteArray hint;
        bool textFetched;
    } cases[] = {
        { ReadScope::UnlessMarkedSecret, "secret", false },
        { ReadScope::Everything, "secret", true },
        { ReadScope::UnlessMarkedSecret, "autre", true },
        { ReadScope::TypesOnly, "autre", false },
    };
    for (const auto &row : cases) {
        reader->setReadScope([&] { return row.scope; });
        const qint64 before = reader->changeCount();
        auto *mime = new QMimeData;
        mime->setText(QStringLiteral("mot de passe"));
        mime->setData(PasteboardTypes::passwordManagerHint, row.hint);
        writer->write(mime);
        ASSERT_TRUE(waitForChange(*reader, before));
        EXPECT_TRUE(reader->types().contains(PasteboardTypes::string));
        // A hint left unread counts as a secret.
        EXPECT_EQ(reader->isMarkedSecret(), row.hint == "secret" || row.scope == ReadScope::TypesOnly)
            << int(row.scope);
        EXPECT_EQ(reader->data(PasteboardTypes::string).has_value(), row.textFetched) << int(row.scope);
    }
}

// A program that never answers costs a bounded wait: its copy is published
// without data, and the next copy is read as usual.
TEST(WaylandPasteboard, GivesUpOnAProgramThatNeverAnswers)
{
    const auto pasteboard = WaylandPasteboard::open();
    ASSERT_TRUE(pasteboard);
    StuckSource stuck[2];
    for (const bool copyAtOnce : { false, true }) {
        const qint64 before = pasteboard->changeCount();
        ASSERT_TRUE(stuck[copyAtOnce].start());
        if (!copyAtOnce) {
            ASSERT_TRUE(waitForChange(*pasteboard, before));
            EXPECT_TRUE(pasteboard->types().contains(PasteboardTypes::string));
            EXPECT_FALSE(pasteboard->data(PasteboardTypes::string));
        }
        const qint64 stuckChange = pasteboard->changeCount();
        ASSERT_TRUE(WlClipboard::copy("après le silence"));
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                return pasteboard->changeCount() != stuckChange
                    && pasteboard->data(PasteboardTypes::string) == "après le silence";
            },
            5000))
            << copyAtOnce;
    }
}
