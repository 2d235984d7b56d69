// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyWindow.h"
#include "WaylandPasteboard.h"
#include "WaylandWorkspace.h"
#include "WlClipboard.h"

#include "HistoryCodec.h"
#include "PasteboardTypes.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QMimeData>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// The app on the test's session, with folders of its own.
class Zettly {
public:
    Zettly()
    {
        for (const char *folder : { "data", "config" })
            QDir(m_home.path()).mkdir(QString::fromLatin1(folder));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_DATA_HOME"), m_home.filePath(QStringLiteral("data")));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.filePath(QStringLiteral("config")));
        // Tells why a copy was not recorded.
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("zettly.clipboard.debug=true"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
        m_process.start(QStringLiteral(ZETTLY_APP_PATH), {});
    }
    ~Zettly() { stop(); }

    // What is on the clipboard at start is never recorded: copies until a
    // copy lands.
    bool waitUntilRecording()
    {
        int probes = 0;
        return QTest::qWaitFor(
            [&] {
                const QByteArray probe = "prêt ? " + QByteArray::number(++probes);
                WlClipboard::copy(probe);
                return QTest::qWaitFor([&] { return newestText() == QString::fromUtf8(probe); }, 300);
            },
            20000);
    }

    // The saved history, newest first. Read without a store: opening one
    // would tidy the folder under the running app's feet.
    QList<ClipItem> savedItems() const
    {
        QFile file(m_home.filePath(QStringLiteral("data/Zettly/clips.json")));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return HistoryCodec::decode(file.readAll()).value_or(QList<ClipItem>());
    }

    QString newestText() const
    {
        const QList<ClipItem> items = savedItems();
        return items.isEmpty() ? QString() : items.first().fullText.value_or(items.first().preview);
    }

    // Whether the app wrote this to its error output, within a few seconds.
    bool waitForLog(const QByteArray &text)
    {
        return QTest::qWaitFor(
            [&] {
                m_log += m_process.readAllStandardError();
                return m_log.contains(text);
            },
            5000);
    }

    bool isRunning() const { return m_process.state() == QProcess::Running; }
    // Whether it ended when asked.
    bool stop()
    {
        m_process.terminate();
        return m_process.waitForFinished(5000);
    }

private:
    QTemporaryDir m_home;
    QProcess m_process;
    QByteArray m_log;
};

} // namespace

// Copies made by native Wayland programs land in the history while no window
// of Zettly's exists; a secret does not, nor a copy made while a password
// manager's window is in front.
TEST(WaylandApp, RecordsNativeCopiesWithoutFocus)
{
    Zettly app;
    ASSERT_TRUE(app.waitUntilRecording());

    QImage image(24, 16, QImage::Format_RGB32);
    image.fill(Qt::darkMagenta);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    const struct {
        QByteArray bytes;
        QString type;
        ClipKind kind;
    } copies[] = {
        { "copié sous Wayland", QStringLiteral("text/plain;charset=utf-8"), ClipKind::Text },
        { "https://exemple.org/wayland", QStringLiteral("text/plain"), ClipKind::Url },
        { png, PasteboardTypes::png, ClipKind::Image },
        { "file:///tmp/un%20fichier.txt\r\nfile:///tmp/autre\r\n", QStringLiteral("text/uri-list"), ClipKind::File },
    };
    for (const auto &copy : copies) {
        const qsizetype before = app.savedItems().size();
        ASSERT_TRUE(WlClipboard::copy(copy.bytes, copy.type));
        EXPECT_TRUE(QTest::qWaitFor([&] { return app.savedItems().size() == before + 1; }, 5000))
            << qPrintable(copy.type);
        const QList<ClipItem> items = app.savedItems();
        ASSERT_FALSE(items.isEmpty());
        EXPECT_EQ(items.first().kind, copy.kind) << qPrintable(copy.type);
    }

    // A password manager's copy, several types at once, then a plain one: the
    // plain one is the next entry.
    const auto passwordManager = WaylandPasteboard::open();
    ASSERT_TRUE(passwordManager);
    auto *secret = new QMimeData;
    secret->setText(QStringLiteral("hunter2 sous Wayland"));
    secret->setData(PasteboardTypes::passwordManagerHint, "secret");
    passwordManager->write(secret);
    ASSERT_EQ(WlClipboard::paste(PasteboardTypes::passwordManagerHint), "secret");
    ASSERT_TRUE(WlClipboard::copy("après le secret"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return app.newestText() == QStringLiteral("après le secret"); }, 5000));
    EXPECT_TRUE(app.waitForLog("marked secret"));

    // A plain copy while KeePassXC's window has the focus.
    const auto workspace = WaylandWorkspace::open();
    ASSERT_TRUE(workspace);
    const auto front = [&] { return workspace->frontmostApp().value_or(RunningApp {}).identifier; };
    {
        KeyWindow keePass(QStringLiteral("org.keepassxc.KeePassXC"));
        ASSERT_TRUE(QTest::qWaitFor([&] { return front() == QStringLiteral("org.keepassxc.KeePassXC"); }, 5000));
        ASSERT_TRUE(WlClipboard::copy("copié devant KeePassXC"));
        // Handled while the window is still in front.
        EXPECT_TRUE(app.waitForLog("password manager is in front"));
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return front() != QStringLiteral("org.keepassxc.KeePassXC"); }, 5000));
    ASSERT_TRUE(WlClipboard::copy("après KeePassXC"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return app.newestText() == QStringLiteral("après KeePassXC"); }, 5000));
    for (const ClipItem &item : app.savedItems()) {
        EXPECT_NE(item.fullText.value_or(item.preview), QStringLiteral("hunter2 sous Wayland"));
        EXPECT_NE(item.fullText.value_or(item.preview), QStringLiteral("copié devant KeePassXC"));
    }
    EXPECT_TRUE(app.isRunning());
    EXPECT_TRUE(app.stop());
}

// The picker, a native window, opens on the command, filters as the user
// types, and Return pastes the chosen entry into the native window that was
// in front: activated again through the compositor, then given Ctrl+V by the
// app's virtual keyboard.
TEST(WaylandApp, PastesIntoTheWindowThatWasInFront)
{
    const auto workspace = WaylandWorkspace::open();
    ASSERT_TRUE(workspace);
    const auto waitForFront = [&](const QString &identifier) {
        return QTest::qWaitFor(
            [&] {
                const std::optional<RunningApp> front = workspace->frontmostApp();
                return front && front->identifier == identifier;
            },
            10000);
    };
    KeyWindow target(QStringLiteral("org.zettly.test.target"));
    ASSERT_TRUE(waitForFront(QStringLiteral("org.zettly.test.target")));
    Zettly app;
    ASSERT_TRUE(app.waitUntilRecording());
    for (const char *text : { "premier choix", "second choix" }) {
        ASSERT_TRUE(WlClipboard::copy(text));
        ASSERT_TRUE(QTest::qWaitFor([&] { return app.newestText() == QString::fromUtf8(text); }, 5000));
    }

    ASSERT_EQ(QProcess::execute(QStringLiteral(ZETTLY_APP_PATH), { QStringLiteral("--toggle") }), 0);
    ASSERT_TRUE(waitForFront(Workspace::ownIdentifier));
    // Even were its first letter lost, the filter matches one entry alone.
    ASSERT_EQ(QProcess::execute(QStringLiteral("wtype"), { QStringLiteral("premier") }), 0);
    ASSERT_EQ(QProcess::execute(QStringLiteral("wtype"), { QStringLiteral("-k"), QStringLiteral("Return") }), 0);
    EXPECT_TRUE(target.waitForLine("Ctrl+V"));
    EXPECT_EQ(workspace->frontmostApp()->identifier, QStringLiteral("org.zettly.test.target"));
    EXPECT_EQ(WlClipboard::paste(QStringLiteral("text/plain;charset=utf-8")), "premier choix");

    // Escape hides it again without pasting; focus goes back to the target.
    const auto toggle
        = [] { return QProcess::execute(QStringLiteral(ZETTLY_APP_PATH), { QStringLiteral("--toggle") }) == 0; };
    ASSERT_TRUE(toggle());
    ASSERT_TRUE(waitForFront(Workspace::ownIdentifier));
    ASSERT_EQ(QProcess::execute(QStringLiteral("wtype"), { QStringLiteral("-k"), QStringLiteral("Escape") }), 0);
    EXPECT_TRUE(waitForFront(QStringLiteral("org.zettly.test.target")));

    // Another window taking the focus hides it too: the next toggle shows
    // it rather than hiding it.
    ASSERT_TRUE(toggle());
    ASSERT_TRUE(waitForFront(Workspace::ownIdentifier));
    ASSERT_EQ(
        QProcess::execute(QStringLiteral("swaymsg"), { QStringLiteral("[app_id=org.zettly.test.target] focus") }), 0);
    ASSERT_TRUE(waitForFront(QStringLiteral("org.zettly.test.target")));
    ASSERT_TRUE(toggle());
    EXPECT_TRUE(waitForFront(Workspace::ownIdentifier));
}
