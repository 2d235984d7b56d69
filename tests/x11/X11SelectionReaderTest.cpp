// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11SelectionReader.h"

#include "CaptureLimits.h"
#include "OtherClient.h"
#include "PasteboardTypes.h"
#include "TestSelectionOwner.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QImage>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <thread>

// Static: other test files may print lists their own way.
static void PrintTo(const QStringList &list, std::ostream *out)
{
    *out << '[' << list.join(u", ").toStdString() << ']';
}

namespace {

using Target = TestSelectionOwner::Target;
using Behaviour = TestSelectionOwner::Behaviour;

bool waitUntil(const std::function<bool()> &condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.hasExpired(10000))
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

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
            [this](qint64 serial, const ClipboardSnapshot &snapshot) {
                m_answers.insert(serial, snapshot);
                if (m_loop)
                    m_loop->quit();
            },
            Qt::QueuedConnection);
        // The suite shares one server: let the owner of the last test go.
        ASSERT_TRUE(waitUntil([] { return OtherClient().clipboardOwner() == XCB_NONE; }));
    }

    // Requests a read and runs the event loop until its answer comes.
    std::optional<ClipboardSnapshot> read(int timeoutMs = 10000)
    {
        m_reader.request(++m_serial);
        QElapsedTimer timer;
        timer.start();
        while (!m_answers.contains(m_serial) && !timer.hasExpired(timeoutMs)) {
            QEventLoop loop;
            QTimer::singleShot(timeoutMs - timer.elapsed(), &loop, &QEventLoop::quit);
            m_loop = &loop;
            loop.exec();
            m_loop = nullptr;
        }
        return m_answers.contains(m_serial) ? std::optional(m_answers.value(m_serial)) : std::nullopt;
    }

    // Takes in answers for ms.
    static void runEventLoop(int ms)
    {
        QEventLoop loop;
        QTimer::singleShot(ms, &loop, &QEventLoop::quit);
        loop.exec();
    }

    X11SelectionReader m_reader;
    QObject m_receiver;
    QHash<qint64, ClipboardSnapshot> m_answers;
    QEventLoop *m_loop = nullptr;
    qint64 m_serial = 0;
};

constexpr int answerTimeoutMs = X11SelectionReader::answerTimeoutMs;

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

TEST_F(X11SelectionReaderTest, TiffIsReadOnlyWithoutAUsablePng)
{
    const QByteArray picture = png({ 120, 80 });
    const QByteArray tiff("II*\0 stands for a TIFF", 22);
    struct Row {
        const char *name;
        QByteArray png;
        bool tiffRead;
    };
    const Row rows[] = {
        { "good PNG", picture, false },
        { "garbage PNG", "\x89PNG but not really", true },
        { "PNG beyond the side limit", png({ CaptureLimits::maxImageSide + 1, 1 }), true },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        TestSelectionOwner owner({ { "image/png", row.png }, { "image/tiff", tiff } });
        ASSERT_TRUE(owner.waitUntilOwner());
        const std::optional<ClipboardSnapshot> snapshot = read();
        ASSERT_TRUE(snapshot);
        EXPECT_EQ(snapshot->types, (QStringList { PasteboardTypes::png, PasteboardTypes::tiff }));
        EXPECT_EQ(snapshot->data.value(PasteboardTypes::png), row.png);
        EXPECT_EQ(snapshot->data.value(PasteboardTypes::tiff), row.tiffRead ? tiff : QByteArray());
        EXPECT_EQ(owner.requestedTargets().contains("image/tiff"), row.tiffRead);
    }
}

TEST_F(X11SelectionReaderTest, StuckOwnersCostOneTimeoutAndAreLeftForANewCopy)
{
    {
        // Stuck on the links: what was read is kept, the text not asked for.
        TestSelectionOwner owner({ { "UTF8_STRING", "password" }, { "text/uri-list", "file:///tmp/x", false },
            { "x-kde-passwordManagerHint", "secret" } });
        ASSERT_TRUE(owner.waitUntilOwner());
        QElapsedTimer timer;
        timer.start();
        const std::optional<ClipboardSnapshot> snapshot = read();
        ASSERT_TRUE(snapshot);
        EXPECT_GE(timer.elapsed(), answerTimeoutMs);
        EXPECT_LT(timer.elapsed(), 3000);
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
    ASSERT_TRUE(waitUntil([&] { return frozen.requestedTargets().size() == 2; }));
    TestSelectionOwner healthy({ { "UTF8_STRING", "copied next" } });
    ASSERT_TRUE(healthy.waitUntilOwner());
    QElapsedTimer timer;
    timer.start();
    snapshot = read();
    ASSERT_TRUE(snapshot);
    // Not after the rest of the stuck wait.
    EXPECT_LT(timer.elapsed(), answerTimeoutMs / 2);
    EXPECT_EQ(snapshot->data.value(PasteboardTypes::string), "copied next");
    runEventLoop(2 * answerTimeoutMs);
    EXPECT_FALSE(m_answers.contains(stuckSerial));
}

TEST_F(X11SelectionReaderTest, CancelledRequestsAreNeverAnswered)
{
    {
        TestSelectionOwner frozen({ { "UTF8_STRING", "never sent" } }, Behaviour::NeverAnswers);
        ASSERT_TRUE(frozen.waitUntilOwner());
        m_reader.request(++m_serial);
        const qint64 stuckSerial = m_serial;
        ASSERT_TRUE(waitUntil([&] { return !frozen.requestedTargets().isEmpty(); }));
        m_reader.cancel();
        // Cancelled before the worker even starts on it.
        m_reader.request(++m_serial);
        m_reader.cancel();
        runEventLoop(3 * answerTimeoutMs);
        EXPECT_FALSE(m_answers.contains(stuckSerial));
        EXPECT_FALSE(m_answers.contains(m_serial));

        // A reader destroyed while stuck: no crash, no hang.
        const qsizetype requests = frozen.requestedTargets().size();
        X11SelectionReader other;
        other.request(1);
        ASSERT_TRUE(waitUntil([&] { return frozen.requestedTargets().size() > requests; }));
    }
    TestSelectionOwner owner({ { "UTF8_STRING", "after cancel" } });
    ASSERT_TRUE(owner.waitUntilOwner());
    const std::optional<ClipboardSnapshot> snapshot = read();
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->data.value(PasteboardTypes::string), "after cancel");
}

} // namespace
