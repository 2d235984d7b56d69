// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandPasteboard.h"
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

// The saved history, newest first. Read without a store: opening one would
// tidy the folder under the running app's feet.
QList<ClipItem> savedItems(const QTemporaryDir &home)
{
    QFile file(home.filePath(QStringLiteral("data/Zettly/clips.json")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return HistoryCodec::decode(file.readAll()).value_or(QList<ClipItem>());
}

QString newestText(const QTemporaryDir &home)
{
    const QList<ClipItem> items = savedItems(home);
    return items.isEmpty() ? QString() : items.first().fullText.value_or(items.first().preview);
}

} // namespace

// Copies made by native Wayland programs land in the history while no window
// of Zettly's exists; a secret does not.
TEST(WaylandApp, RecordsNativeCopiesWithoutFocus)
{
    QTemporaryDir home;
    for (const char *folder : { "data", "config" })
        QDir(home.path()).mkdir(QString::fromLatin1(folder));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    QProcess app;
    app.setProcessEnvironment(environment);
    app.setProcessChannelMode(QProcess::ForwardedChannels);
    app.start(QStringLiteral(ZETTLY_APP_PATH), {});
    ASSERT_TRUE(app.waitForStarted());

    // What is on the clipboard at start is never recorded: copy until a copy
    // lands.
    int probes = 0;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            const QByteArray probe = "prêt ? " + QByteArray::number(++probes);
            WlClipboard::copy(probe);
            return QTest::qWaitFor([&] { return newestText(home) == QString::fromUtf8(probe); }, 300);
        },
        20000));

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
    };
    for (const auto &copy : copies) {
        const qsizetype before = savedItems(home).size();
        ASSERT_TRUE(WlClipboard::copy(copy.bytes, copy.type));
        EXPECT_TRUE(QTest::qWaitFor([&] { return savedItems(home).size() == before + 1; }, 5000))
            << qPrintable(copy.type);
        const QList<ClipItem> items = savedItems(home);
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
    EXPECT_TRUE(QTest::qWaitFor([&] { return newestText(home) == QStringLiteral("après le secret"); }, 5000));
    for (const ClipItem &item : savedItems(home))
        EXPECT_NE(item.fullText.value_or(item.preview), QStringLiteral("hunter2 sous Wayland"));
    EXPECT_EQ(app.state(), QProcess::Running);

    app.terminate();
    EXPECT_TRUE(app.waitForFinished(5000));
}
