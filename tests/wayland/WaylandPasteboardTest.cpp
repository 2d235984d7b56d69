// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandPasteboard.h"
#include "WlClipboard.h"

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
        { huge, QStringLiteral("text/plain"), PasteboardTypes::string, false },
    };
    for (const auto &copy : copies) {
        const qint64 before = pasteboard->changeCount();
        ASSERT_TRUE(WlClipboard::copy(copy.bytes, copy.offeredAs));
        ASSERT_TRUE(waitForChange(*pasteboard, before)) << qPrintable(copy.offeredAs);
        EXPECT_EQ(pasteboard->changeCount(), before + 1);
        EXPECT_EQ(pasteboard->types().count(copy.readAs), 1) << qPrintable(pasteboard->types().join(u' '));
        EXPECT_EQ(pasteboard->data(copy.readAs).has_value(), copy.kept) << qPrintable(copy.offeredAs);
        if (copy.kept)
            EXPECT_EQ(pasteboard->data(copy.readAs).value_or(QByteArray()), copy.bytes);
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

// A copy marked secret is seen with its marker; its text is fetched only
// when secrets are not being skipped.
TEST(WaylandPasteboard, FetchesNoSecretWhenSkippingThem)
{
    const auto writer = WaylandPasteboard::open();
    const auto reader = WaylandPasteboard::open();
    ASSERT_TRUE(writer && reader);
    const struct {
        bool skips;
        QByteArray hint;
        bool textFetched;
    } cases[] = {
        { true, "secret", false },
        { false, "secret", true },
        { true, "autre", true },
    };
    for (const auto &row : cases) {
        reader->setSkipsSecretData(row.skips);
        const qint64 before = reader->changeCount();
        auto *mime = new QMimeData;
        mime->setText(QStringLiteral("mot de passe"));
        mime->setData(PasteboardTypes::passwordManagerHint, row.hint);
        writer->write(mime);
        ASSERT_TRUE(waitForChange(*reader, before));
        EXPECT_TRUE(reader->types().contains(PasteboardTypes::string));
        EXPECT_EQ(reader->data(PasteboardTypes::passwordManagerHint), row.hint);
        EXPECT_EQ(reader->data(PasteboardTypes::string).has_value(), row.textFetched) << row.skips << row.hint.data();
    }
}
