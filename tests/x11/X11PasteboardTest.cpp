// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Pasteboard.h"

#include "OtherClient.h"
#include "PasteboardTypes.h"
#include "TestPrograms.h"

#include <QMimeData>
#include <QSignalSpy>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

QMimeData *textData(const QString &text)
{
    auto *data = new QMimeData;
    data->setText(text);
    return data;
}

} // namespace

// Another client's copy is one change, published once its data is in; our
// writes count as one change each, at once, and never again later; other
// clients paste what we wrote for as long as we own the clipboard.
TEST(X11Pasteboard, EachCopyCountsOnceAndOursAreServedToOthers)
{
    X11Pasteboard pasteboard;
    QSignalSpy changes(&pasteboard, &Pasteboard::changed);
    const qint64 start = pasteboard.changeCount();

    XClip::copy("copié ailleurs\n");
    ASSERT_TRUE(changes.wait(5000));
    EXPECT_EQ(pasteboard.changeCount(), start + 1);
    EXPECT_TRUE(pasteboard.types().contains(PasteboardTypes::string));
    EXPECT_EQ(pasteboard.string(PasteboardTypes::string), QStringLiteral("copié ailleurs\n"));

    pasteboard.clearContents();
    pasteboard.write(textData(QStringLiteral("écrit par Zettly")));
    EXPECT_EQ(pasteboard.changeCount(), start + 3);
    EXPECT_EQ(pasteboard.data(PasteboardTypes::string), QByteArray("écrit par Zettly"));
    EXPECT_EQ(XClip::paste(), QByteArray("écrit par Zettly"));

    auto *files = new QMimeData;
    files->setUrls(
        { QUrl::fromLocalFile(QStringLiteral("/tmp/a b.txt")), QUrl::fromLocalFile(QStringLiteral("/tmp/c")) });
    files->setData(PasteboardTypes::copiedFiles, "copy\nfile:///tmp/a%20b.txt\nfile:///tmp/c");
    pasteboard.write(files);
    EXPECT_EQ(XClip::paste(QStringLiteral("x-special/gnome-copied-files")),
        QByteArray("copy\nfile:///tmp/a%20b.txt\nfile:///tmp/c"));
    EXPECT_TRUE(XClip::paste(QStringLiteral("text/uri-list")).startsWith("file:///tmp/a%20b.txt"));

    // Served to xclip after our writes: Qt has seen any echo of them.
    EXPECT_EQ(pasteboard.changeCount(), start + 4);
    EXPECT_EQ(changes.count(), 4);

    // A clear leaves nothing for others to paste, and no late echo either:
    // one would come before the next program's copy.
    pasteboard.clearContents();
    EXPECT_EQ(pasteboard.changeCount(), start + 5);
    EXPECT_TRUE(pasteboard.types().isEmpty());
    EXPECT_TRUE(XClip::paste().isEmpty());
    XClip::copy("https://example.org/", QStringLiteral("text/uri-list"));
    const QList<QUrl> link { QUrl(QStringLiteral("https://example.org/")) };
    ASSERT_TRUE(eventually([&] { return pasteboard.urls() == link; }));
    EXPECT_EQ(pasteboard.changeCount(), start + 6);
}

// Another program may take the clipboard stamped with the very server time
// of our own write (X accepts it): that copy is still another program's.
TEST(X11Pasteboard, SeesACopyStampedWithTheTimeOfOurWrite)
{
    X11Pasteboard pasteboard;
    pasteboard.write(textData(QStringLiteral("à nous")));
    const qint64 ours = pasteboard.changeCount();

    // Our write's time, as any client may ask it of the owner.
    OtherClient other;
    const xcb_window_t window = other.createWindow({});
    xcb_convert_selection(other.connection(), window, other.atom("CLIPBOARD"), other.atom("TIMESTAMP"),
        other.atom("STAMP"), XCB_CURRENT_TIME);
    other.sync();
    ASSERT_TRUE(eventually([&] { return !other.cardinals(window, "STAMP").isEmpty(); }));

    xcb_set_selection_owner(other.connection(), window, other.atom("CLIPBOARD"), other.cardinals(window, "STAMP")[0]);
    ASSERT_EQ(other.clipboardOwner(), window);
    EXPECT_TRUE(QTest::qWaitFor([&] { return pasteboard.changeCount() > ours; }, 5000));
}
