// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "ClipboardWatcher.h"
#include "OtherClient.h"
#include "Paste.h"
#include "PasteboardTypes.h"
#include "TestSelectionOwner.h"
#include "X11Pasteboard.h"
#include "X11Workspace.h"
#include "XClip.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

QByteArray encoded(const QImage &image, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QImage picture(int width, int height, QColor color)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

} // namespace

// The app's capture path on a real X server: another client copies, our
// clipboard reader fetches the data off the main thread, the watcher records
// it in the history file.
class Capture : public ::testing::Test {
protected:
    Capture()
        : settings(dir.filePath(QStringLiteral("defaults.json")))
        , store(settings, dir.filePath(QStringLiteral("Zettly")))
        , watcher(pasteboard, workspace, store, settings)
    {
        watcher.start();
    }

    // Waits until the history holds count entries.
    bool waitForCount(qsizetype count) const
    {
        return QTest::qWaitFor([&] { return store.items().size() == count; }, 5000);
    }

    // Copies a marker text and waits for it: whatever was copied before it has
    // been looked at by then.
    void copySentinel()
    {
        const QString text = QStringLiteral("repère %1").arg(++sentinels);
        XClip::copy(text.toUtf8());
        ASSERT_TRUE(QTest::qWaitFor([&] { return newest().fullText == text; }, 5000));
    }

    // Copies with xclip and returns once the copy has been looked at, so that
    // a next copy cannot overtake it before it is read.
    void copyAndSettle(const QByteArray &bytes, const QString &target = {})
    {
        const qint64 before = pasteboard.changeCount();
        XClip::copy(bytes, target);
        ASSERT_TRUE(QTest::qWaitFor([&] { return pasteboard.changeCount() > before; }, 5000));
        QCoreApplication::processEvents();
    }

    ClipItem newest() const { return store.items().value(0); }
    QStringList imageFiles() const { return QDir(store.imagesDirPath()).entryList(QDir::Files); }
    QByteArray imageBytes(const ClipItem &item) const
    {
        QFile file(store.imagePath(item));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir;
    AppSettings settings;
    ClipboardStore store;
    X11Pasteboard pasteboard;
    X11Workspace workspace;
    ClipboardWatcher watcher;
    int sentinels = 0;
};

TEST_F(Capture, TextsLinksAndFiles)
{
    XClip::copy("première ligne\nseconde ligne");
    ASSERT_TRUE(waitForCount(1));
    EXPECT_EQ(newest().kind, ClipKind::Text);
    EXPECT_EQ(newest().preview, QStringLiteral("première ligne seconde ligne"));
    EXPECT_EQ(newest().fullText, QStringLiteral("première ligne\nseconde ligne"));

    XClip::copy("HTTPS://Example.org/Chemin");
    ASSERT_TRUE(waitForCount(2));
    EXPECT_EQ(newest().kind, ClipKind::Url);
    EXPECT_EQ(newest().preview, QStringLiteral("HTTPS://Example.org/Chemin"));

    XClip::copy("file:///home/moi/rapport%20final.pdf\r\n", QStringLiteral("text/uri-list"));
    ASSERT_TRUE(waitForCount(3));
    EXPECT_EQ(newest().kind, ClipKind::File);
    EXPECT_EQ(newest().preview, QStringLiteral("rapport final.pdf"));
    EXPECT_EQ(newest().filePaths, QStringList { QStringLiteral("/home/moi/rapport final.pdf") });

    XClip::copy("file:///a/un.txt\r\nfile:///b/deux.txt\r\nfile:///c/trois\r\n", QStringLiteral("text/uri-list"));
    ASSERT_TRUE(waitForCount(4));
    EXPECT_EQ(newest().preview, QStringLiteral("3 fichiers"));
    EXPECT_EQ(newest().filePaths,
        (QStringList { QStringLiteral("/a/un.txt"), QStringLiteral("/b/deux.txt"), QStringLiteral("/c/trois") }));
    EXPECT_TRUE(imageFiles().isEmpty());
}

TEST_F(Capture, PicturesAreStoredAsPng)
{
    const QByteArray png = encoded(picture(64, 48, Qt::red), "png");
    XClip::copy(png, QStringLiteral("image/png"));
    ASSERT_TRUE(waitForCount(1));
    EXPECT_EQ(newest().kind, ClipKind::Image);
    EXPECT_EQ(newest().preview, QStringLiteral("Image 64×48"));
    // Byte for byte, not decoded and encoded again.
    EXPECT_EQ(imageBytes(newest()), png);

    // Another picture of the same size is a repeat for the history, but its
    // file is written all the same.
    copyAndSettle(encoded(picture(64, 48, Qt::blue), "png"), QStringLiteral("image/png"));
    copySentinel();
    EXPECT_EQ(store.items().size(), 2);
    EXPECT_EQ(store.items().value(1).preview, QStringLiteral("Image 64×48"));
    EXPECT_EQ(imageFiles().size(), 2);

    XClip::copy(encoded(picture(30, 20, Qt::green), "tiff"), QStringLiteral("image/tiff"));
    ASSERT_TRUE(waitForCount(3));
    EXPECT_EQ(newest().preview, QStringLiteral("Image 30×20"));
    QImage converted;
    ASSERT_TRUE(converted.loadFromData(imageBytes(newest()), "png"));
    EXPECT_EQ(converted.pixelColor(5, 5), QColor(Qt::green));
}

TEST_F(Capture, OwnWriteIsSkippedAndTheNextCopyRecorded)
{
    XClip::copy("à recoller");
    ASSERT_TRUE(waitForCount(1));
    XClip::copy("plus récent");
    ASSERT_TRUE(waitForCount(2));

    const ClipItem older = store.items().value(1);
    Paste::putOnPasteboard(older, store, watcher);
    EXPECT_EQ(XClip::paste(), QByteArray("à recoller"));
    copySentinel();
    // Pasting moved nothing and added nothing but the marker.
    EXPECT_EQ(store.items().size(), 3);
    EXPECT_EQ(store.items().value(2), older);

    // A copy right after our write, before any tick, is the user's.
    Paste::putOnPasteboard(older, store, watcher);
    XClip::copy("copié juste après");
    ASSERT_TRUE(waitForCount(4));
    EXPECT_EQ(newest().fullText, QStringLiteral("copié juste après"));
}

// Markers and password managers, with the privacy switch on and then off.
TEST_F(Capture, SecretsStayOutWhileThePrivacySwitchIsOn)
{
    const QList<QList<TestSelectionOwner::Target>> secrets = {
        { { "UTF8_STRING", "caché" }, { "org.nspasteboard.ConcealedType", "" } },
        { { "UTF8_STRING", "éphémère" }, { "org.nspasteboard.TransientType", "" } },
        { { "UTF8_STRING", "mot de passe" }, { "x-kde-passwordManagerHint", "secret" } },
    };
    for (const bool privacy : { true, false }) {
        settings.setIgnoreSecretApps(privacy);
        for (const auto &targets : secrets) {
            const QString text = QString::fromUtf8(targets.first().bytes);
            const QString marker = QString::fromUtf8(targets.last().name);
            const qsizetype before = store.items().size();
            TestSelectionOwner owner(targets);
            ASSERT_TRUE(owner.waitUntilOwner());
            // Once published, the copy is looked at on the next turn.
            ASSERT_TRUE(QTest::qWaitFor([&] { return pasteboard.types().contains(marker); }, 5000));
            QTest::qWait(50);
            EXPECT_EQ(store.items().size(), privacy ? before : before + 1) << qPrintable(text);
            EXPECT_EQ(newest().fullText == text, !privacy) << qPrintable(text);
        }
    }

    // A hint with another value is no secret.
    settings.setIgnoreSecretApps(true);
    {
        TestSelectionOwner owner({ { "UTF8_STRING", "simple note" }, { "x-kde-passwordManagerHint", "none" } });
        ASSERT_TRUE(owner.waitUntilOwner());
        ASSERT_TRUE(QTest::qWaitFor([&] { return newest().fullText == QStringLiteral("simple note"); }, 5000));
    }

    OtherClient keePassXc;
    workspace.activate({ keePassXc.createWindow("keepassxc", "KeePassXC"), std::nullopt });
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return workspace.frontmostApp().value_or(RunningApp()).identifier == QStringLiteral("KeePassXC"); },
        5000));
    const qsizetype before = store.items().size();
    XClip::copy("copié depuis le coffre");
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return pasteboard.string(PasteboardTypes::string) == QStringLiteral("copié depuis le coffre"); }, 5000));
    QTest::qWait(50);
    EXPECT_EQ(store.items().size(), before);
    settings.setIgnoreSecretApps(false);
    XClip::copy("copié depuis le coffre, sans filtre");
    ASSERT_TRUE(waitForCount(before + 1));
    EXPECT_EQ(newest().fullText, QStringLiteral("copié depuis le coffre, sans filtre"));
    EXPECT_EQ(newest().sourceApp, QStringLiteral("KeePassXC"));
}

// A picture offered both ways is stored from its PNG bytes.
TEST_F(Capture, PngWinsOverTiff)
{
    const QByteArray png = encoded(picture(40, 30, Qt::yellow), "png");
    TestSelectionOwner owner({ { "image/tiff", encoded(picture(40, 30, Qt::yellow), "tiff") }, { "image/png", png },
        { "UTF8_STRING", "légende" } });
    ASSERT_TRUE(owner.waitUntilOwner());
    ASSERT_TRUE(waitForCount(1));
    EXPECT_EQ(newest().preview, QStringLiteral("Image 40×30"));
    EXPECT_EQ(imageBytes(newest()), png);
    EXPECT_EQ(imageFiles().size(), 1);
}

// Huge, long or malformed copies end in a defined outcome and leave the
// stored history as it was.
TEST_F(Capture, HostileCopiesHaveBoundedOutcomes)
{
    XClip::copy("avant");
    ASSERT_TRUE(waitForCount(1));
    const QString historyFile = dir.filePath(QStringLiteral("Zettly/clips.json"));
    const auto savedHistory = [&] {
        QFile file(historyFile);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    store.flush();
    const QByteArray before = savedHistory();

    // 50 MB: read up to the bound, then given up; nothing recorded.
    copyAndSettle(QByteArray(50 * 1024 * 1024, 'x'));
    EXPECT_TRUE(pasteboard.types().contains(PasteboardTypes::string));
    EXPECT_EQ(store.items().size(), 1);
    store.flush();
    EXPECT_EQ(savedHistory(), before);

    // 5 MB comes in INCR pieces and is recorded whole.
    QByteArray large(5 * 1024 * 1024, 'y');
    large.prepend("début ");
    XClip::copy(large);
    ASSERT_TRUE(waitForCount(2));
    EXPECT_EQ(newest().fullText->toUtf8(), large);
    EXPECT_EQ(newest().preview.size(), 200);

    XClip::copy("ok \xff\xfe fin");
    ASSERT_TRUE(waitForCount(3));
    EXPECT_EQ(newest().fullText, QStringLiteral("ok \uFFFD\uFFFD fin"));

    QByteArray uris;
    for (int i = 0; i < 10000; ++i)
        uris += "file:///srv/partage/fichier-" + QByteArray::number(i) + ".txt\r\n";
    XClip::copy(uris, QStringLiteral("text/uri-list"));
    ASSERT_TRUE(waitForCount(4));
    EXPECT_EQ(newest().preview, QStringLiteral("10000 fichiers"));
    EXPECT_EQ(newest().filePaths.value_or(QStringList()).size(), 10000);
    EXPECT_EQ(newest().filePaths.value_or(QStringList()).value(9999), QStringLiteral("/srv/partage/fichier-9999.txt"));
}
