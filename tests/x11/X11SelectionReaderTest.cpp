// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11SelectionReader.h"

#include "CaptureLimits.h"
#include "OtherClient.h"
#include "PasteboardTypes.h"
#include "TestPrograms.h"

#include <QBuffer>
#include <QImage>

#include <gtest/gtest.h>

#include <optional>

// Static: other test files may print lists their own way.
static void PrintTo(const QStringList &list, std::ostream *out)
{
    *out << '[' << list.join(u", ").toStdString() << ']';
}

namespace {

using Target = TestSelectionOwner::Target;
using Behaviour = TestSelectionOwner::Behaviour;

QByteArray png(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    image.setPixel(0, 0, 0xffff8000);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

class X11SelectionReaderTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_reader.isValid());
        QObject::connect(
            &m_reader, &X11SelectionReader::snapshotRead, &m_receiver,
            [this](qint64 serial, const ClipboardSnapshot &snapshot) { m_answers.insert(serial, snapshot); },
            Qt::QueuedConnection);
        // The suite shares one server: let the owner of the last test go.
        ASSERT_TRUE(eventually([] { return OtherClient().clipboardOwner() == XCB_NONE; }));
    }

    // Requests a read and runs the event loop until its answer comes.
    std::optional<ClipboardSnapshot> read(ReadScope scope = ReadScope::Everything)
    {
        m_reader.request(++m_serial, scope);
        if (!eventually([&] { return m_answers.contains(m_serial); }))
            return std::nullopt;
        return m_answers.value(m_serial);
    }

    X11SelectionReader m_reader;
    QObject m_receiver;
    QHash<qint64, ClipboardSnapshot> m_answers;
    qint64 m_serial = 0;
};

TEST_F(X11SelectionReaderTest, EmptyClipboardAndUnreachableServer)
{
    const std::optional<ClipboardSnapshot> snapshot = read();
    ASSERT_TRUE(snapshot);
    EXPECT_TRUE(snapshot->types.isEmpty());
    EXPECT_TRUE(snapshot->data.isEmpty());

    X11SelectionReader unreachable(":4242");
    EXPECT_FALSE(unreachable.isValid());
    unreachable.request(1);
    unreachable.cancel();
}

TEST_F(X11SelectionReaderTest, TargetsAreMappedAndTheCapturedOnesRead)
{
    TestSelectionOwner owner({ { "TIMESTAMP", "" }, { "MULTIPLE", "" }, { "SAVE_TARGETS", "" },
        { "text/plain;charset=utf-8", "charset text" }, { "UTF8_STRING", "utf8 text \xe2\x9c\x93" },
        { "COMPOUND_TEXT", "compound" }, { "STRING", "latin" }, { "TEXT", "text" }, { "text/plain", "plain" },
        { "text/uri-list", "file:///tmp/a%20b\r\n" }, { "PIXMAP", "" }, { "x-kde-passwordManagerHint", "secret" },
        { "org.nspasteboard.ConcealedType", "" }, { "org.nspasteboard.TransientType", "" },
        { "application/x-zettly-test", "not captured" } });
    ASSERT_TRUE(owner.waitUntilOwner());
    const std::optional<ClipboardSnapshot> snapshot = read();
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->types,
        (QStringList { PasteboardTypes::string, PasteboardTypes::uriList, PasteboardTypes::passwordManagerHint,
            PasteboardTypes::concealed, PasteboardTypes::transient, QStringLiteral("application/x-zettly-test") }));
    EXPECT_EQ(snapshot->data.value(PasteboardTypes::string), "utf8 text \xe2\x9c\x93");
    EXPECT_EQ(snapshot->data.value(PasteboardTypes::uriList), "file:///tmp/a%20b\r\n");
    EXPECT_EQ(snapshot->data.value(PasteboardTypes::passwordManagerHint), "secret");
    EXPECT_EQ(snapshot->data.size(), 3);
    // Nothing is transferred that capture does not use.
    EXPECT_EQ(owner.requestedTargets(),
        (QList<QByteArray> { "TARGETS", "x-kde-passwordManagerHint", "text/uri-list", "UTF8_STRING" }));
}

TEST_F(X11SelectionReaderTest, TextComesFromTheBestTextTarget)
{
    struct Row {
        const char *name;
        QList<Target> targets;
        Behaviour behaviour;
        QByteArray text;
    };
    const Row rows[] = {
        { "charset before plain", { { "text/plain", "plain" }, { "text/plain;charset=UTF-8", "utf-8" } },
            Behaviour::Answers, "utf-8" },
        { "plain before STRING", { { "STRING", "latin" }, { "text/plain", "plain" } }, Behaviour::Answers, "plain" },
        { "STRING is Latin-1", { { "STRING", "caf\xe9" } }, Behaviour::Answers, "caf\xc3\xa9" },
        { "TEXT in an unknown encoding", { { "TEXT", "x" } }, Behaviour::Answers, {} },
        { "no TARGETS, UTF8_STRING", { { "STRING", "latin" }, { "UTF8_STRING", "direct \xe2\x9c\x93" } },
            Behaviour::RefusesTargets, "direct \xe2\x9c\x93" },
        { "no TARGETS, STRING", { { "STRING", "caf\xe9" } }, Behaviour::RefusesTargets, "caf\xc3\xa9" },
        { "no TARGETS, no text", { { "image/png", png({ 4, 4 }) } }, Behaviour::RefusesTargets, {} },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        TestSelectionOwner owner(row.targets, row.behaviour);
        ASSERT_TRUE(owner.waitUntilOwner());
        const std::optional<ClipboardSnapshot> snapshot = read();
        ASSERT_TRUE(snapshot);
        if (row.text.isNull()) {
            EXPECT_FALSE(snapshot->data.contains(PasteboardTypes::string));
            continue;
        }
        EXPECT_EQ(snapshot->types, QStringList { PasteboardTypes::string });
        EXPECT_EQ(snapshot->data.value(PasteboardTypes::string), row.text);
    }
}

// Only what capture will use is transferred: a secret's data never, a TIFF
// only for want of a PNG that decodes, a file manager's list or a browser's
// link only without the common types that say the same.
TEST_F(X11SelectionReaderTest, FetchesOnlyWhatCaptureNeeds)
{
    const QByteArray picture = png({ 120, 80 });
    const QByteArray tiff("II*\0 stands for a TIFF", 22);
    const QByteArray files = "copy\nfile:///tmp/a";
    struct Row {
        const char *name;
        QList<Target> targets;
        ReadScope scope;
        QList<QByteArray> requested;
    };
    const QList<Row> rows {
        { "good PNG", { { "image/png", picture }, { "image/tiff", tiff } }, ReadScope::Everything, { "image/png" } },
        { "garbage PNG", { { "image/png", "\x89PNG but not really" }, { "image/tiff", tiff } }, ReadScope::Everything,
            { "image/png", "image/tiff" } },
        { "PNG whose pixels are cut off", { { "image/png", picture.left(picture.size() / 2) }, { "image/tiff", tiff } },
            ReadScope::Everything, { "image/png", "image/tiff" } },
        { "PNG beyond the side limit",
            { { "image/png", png({ CaptureLimits::maxImageSide + 1, 1 }) }, { "image/tiff", tiff } },
            ReadScope::Everything, { "image/png", "image/tiff" } },
        { "hint secret, privacy off", { { "UTF8_STRING", "pw" }, { "x-kde-passwordManagerHint", "secret" } },
            ReadScope::Everything, { "x-kde-passwordManagerHint", "UTF8_STRING" } },
        { "hint secret", { { "UTF8_STRING", "pw" }, { "x-kde-passwordManagerHint", "secret" } },
            ReadScope::UnlessMarkedSecret, { "x-kde-passwordManagerHint" } },
        { "hint of another value", { { "UTF8_STRING", "note" }, { "x-kde-passwordManagerHint", "none" } },
            ReadScope::UnlessMarkedSecret, { "x-kde-passwordManagerHint", "UTF8_STRING" } },
        { "concealed", { { "UTF8_STRING", "pw" }, { "org.nspasteboard.ConcealedType", "" } },
            ReadScope::UnlessMarkedSecret, {} },
        { "password manager in front", { { "UTF8_STRING", "pw" } }, ReadScope::TypesOnly, {} },
        { "file manager's list with a URI list",
            { { "x-special/gnome-copied-files", files }, { "text/uri-list", "file:///tmp/a" } }, ReadScope::Everything,
            { "text/uri-list" } },
        { "file manager's list alone", { { "x-special/gnome-copied-files", files } }, ReadScope::Everything,
            { "x-special/gnome-copied-files" } },
        { "browser's link with text", { { "text/x-moz-url", "h\0" }, { "UTF8_STRING", "https://a.org" } },
            ReadScope::Everything, { "UTF8_STRING" } },
        { "browser's link alone", { { "text/x-moz-url", "h\0" } }, ReadScope::Everything, { "text/x-moz-url" } },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        TestSelectionOwner owner(row.targets);
        ASSERT_TRUE(owner.waitUntilOwner());
        const std::optional<ClipboardSnapshot> snapshot = read(row.scope);
        ASSERT_TRUE(snapshot);
        EXPECT_EQ(owner.requestedTargets(), QList<QByteArray> { "TARGETS" } + row.requested);
        EXPECT_EQ(snapshot->types.size(), row.targets.size());
        for (const Target &target : row.targets) {
            const QString type
                = target.name == "UTF8_STRING" ? PasteboardTypes::string : QString::fromLatin1(target.name);
            EXPECT_EQ(snapshot->data.contains(type), row.requested.contains(target.name)) << target.name.constData();
        }
    }
}

TEST_F(X11SelectionReaderTest, StuckOwnersCostOneTimeoutAndAreLeftForANewCopy)
{
    {
        // Stuck on the links: what was read is kept, the text not asked for.
        TestSelectionOwner owner({ { "UTF8_STRING", "password" }, { "text/uri-list", "file:///tmp/x", false },
            { "x-kde-passwordManagerHint", "secret" } });
        ASSERT_TRUE(owner.waitUntilOwner());
        const std::optional<ClipboardSnapshot> snapshot = read();
        ASSERT_TRUE(snapshot);
        EXPECT_EQ(snapshot->types,
            (QStringList { PasteboardTypes::string, PasteboardTypes::uriList, PasteboardTypes::passwordManagerHint }));
        EXPECT_EQ(snapshot->data, (QHash<QString, QByteArray> { { PasteboardTypes::passwordManagerHint, "secret" } }));
        EXPECT_FALSE(owner.requestedTargets().contains("UTF8_STRING"));
    }

    TestSelectionOwner frozen({ { "UTF8_STRING", "never sent" } }, Behaviour::NeverAnswers);
    ASSERT_TRUE(frozen.waitUntilOwner());
    std::optional<ClipboardSnapshot> snapshot = read();
    ASSERT_TRUE(snapshot);
    EXPECT_TRUE(snapshot->types.isEmpty());
    EXPECT_TRUE(snapshot->data.isEmpty());

    // Stuck on the frozen owner again when another program copies.
    m_reader.request(++m_serial);
    const qint64 stuckSerial = m_serial;
    ASSERT_TRUE(eventually([&] { return frozen.requestedTargets().size() == 2; }));
    TestSelectionOwner healthy({ { "UTF8_STRING", "copied next" } });
    ASSERT_TRUE(healthy.waitUntilOwner());
    snapshot = read();
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->data.value(PasteboardTypes::string), "copied next");
    // Answers come in order: an answer to the abandoned read would be in.
    EXPECT_FALSE(m_answers.contains(stuckSerial));
    EXPECT_EQ(frozen.requestedTargets().size(), 2);
}

TEST_F(X11SelectionReaderTest, CancelledRequestsAreNeverAnswered)
{
    QList<qint64> cancelledSerials;
    {
        TestSelectionOwner frozen({ { "UTF8_STRING", "never sent" } }, Behaviour::NeverAnswers);
        ASSERT_TRUE(frozen.waitUntilOwner());
        m_reader.request(++m_serial);
        const qint64 stuckSerial = m_serial;
        ASSERT_TRUE(eventually([&] { return !frozen.requestedTargets().isEmpty(); }));
        m_reader.cancel();
        // Cancelled before the worker even starts on it.
        m_reader.request(++m_serial);
        m_reader.cancel();
        cancelledSerials = { stuckSerial, m_serial };
        // Stuck the same way after them: once it gives up, they would have
        // been answered were they not cancelled.
        X11SelectionReader later;
        bool laterAnswered = false;
        QObject::connect(
            &later, &X11SelectionReader::snapshotRead, &m_receiver, [&] { laterAnswered = true; },
            Qt::QueuedConnection);
        later.request(1);
        ASSERT_TRUE(eventually([&] { return laterAnswered; }));

        // A reader destroyed while stuck: no crash, no hang.
        const qsizetype requests = frozen.requestedTargets().size();
        X11SelectionReader other;
        other.request(1);
        ASSERT_TRUE(eventually([&] { return frozen.requestedTargets().size() > requests; }));
    }
    TestSelectionOwner owner({ { "UTF8_STRING", "after cancel" } });
    ASSERT_TRUE(owner.waitUntilOwner());
    const std::optional<ClipboardSnapshot> snapshot = read();
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->data.value(PasteboardTypes::string), "after cancel");
    for (const qint64 serial : cancelledSerials)
        EXPECT_FALSE(m_answers.contains(serial)) << serial;
}

} // namespace
