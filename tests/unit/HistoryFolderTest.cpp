// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryFolder.h"
#include "HistoryCodec.h"
#include "TestFolder.h"

#include <QDir>
#include <QScopeGuard>

#include <csignal>

#include <sys/resource.h>

using HistoryFolderTest = TestFolder;

TEST_F(HistoryFolderTest, FirstStartMakesPrivateFoldersAndSavesPrivately)
{
    // An open umask, restored however the test ends.
    const auto restoreUmask = qScopeGuard([previous = ::umask(0)] { ::umask(previous); });
    const QString dir = path(QStringLiteral("deep/Zettly"));
    HistoryFolder folder(dir);
    EXPECT_TRUE(QFileInfo(folder.imagesDirPath()).isDir());
    EXPECT_EQ(folder.dbPath(), dir + QStringLiteral("/clips.json"));
    EXPECT_EQ(modeOf(dir), 0700u);
    EXPECT_EQ(modeOf(folder.imagesDirPath()), 0700u);
    EXPECT_TRUE(folder.load().isEmpty());
    EXPECT_FALSE(QFile::exists(folder.dbPath())) << "loading alone must not write";

    ASSERT_TRUE(folder.save({ textClip(QStringLiteral("a")) }));
    EXPECT_EQ(modeOf(folder.dbPath()), 0600u);
    // Exactly the file and the images folder: no temporary left behind.
    EXPECT_EQ(QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
        (QStringList { QStringLiteral("clips.json"), QStringLiteral("images") }));

    // A folder made by an older version with open permissions is closed.
    const QString open = path(QStringLiteral("open"));
    QDir().mkpath(open);
    QFile::setPermissions(open, QFileDevice::Permissions(0x7777));
    const HistoryFolder reopened(open);
    EXPECT_EQ(modeOf(open), 0700u);
}

TEST_F(HistoryFolderTest, UndecodableFileIsKeptAsideBeforeAnySave)
{
    HistoryFolder folder(path(QStringLiteral("Zettly")));
    const QByteArray damaged = R"([{"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a",)"
                               R"("pinned":false,"createdAt":1},{"id":"1F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9",)"
                               R"("kind":"link","preview":"b","pinned":false,"createdAt":2}])";
    writeAll(folder.dbPath(), damaged);
    EXPECT_TRUE(folder.load().isEmpty());

    const QStringList copies = QDir(folder.dirPath()).entryList({ QStringLiteral("clips.json.unreadable-*") });
    ASSERT_EQ(copies.size(), 1);
    const QString copy = folder.dirPath() + u'/' + copies.first();
    EXPECT_EQ(readAll(copy), damaged);
    EXPECT_EQ(modeOf(copy), 0600u);

    // The first save replaces clips.json but leaves the copy alone; a second
    // unreadable load the same second does not overwrite the first copy.
    ASSERT_TRUE(folder.save({ textClip(QStringLiteral("new")) }));
    EXPECT_EQ(readAll(copy), damaged);
    writeAll(folder.dbPath(), "not json");
    EXPECT_TRUE(folder.load().isEmpty());
    EXPECT_EQ(QDir(folder.dirPath()).entryList({ QStringLiteral("clips.json.unreadable-*") }).size(), 2);
    EXPECT_EQ(readAll(copy), damaged);

    // What cannot even be opened is moved aside too, before any save.
    QDir().mkdir(folder.dbPath());
    EXPECT_TRUE(folder.load().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(folder.dbPath()));
    EXPECT_EQ(QDir(folder.dirPath()).entryList({ QStringLiteral("clips.json.unreadable-*") }).size(), 3);
}

TEST_F(HistoryFolderTest, FailedSaveKeepsThePreviousFile)
{
    HistoryFolder folder(path(QStringLiteral("Zettly")));
    ASSERT_TRUE(folder.save({ textClip(QStringLiteral("kept")) }));
    const QByteArray before = readAll(folder.dbPath());

    // A file size limit makes the write fail even for root, like a full disk.
    struct rlimit previous { };
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &previous), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = previous;
    small.rlim_cur = 4096;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool saved = folder.save({ textClip(QString(100000, u'x')) });
    ::setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, previousHandler);

    EXPECT_FALSE(saved);
    EXPECT_EQ(readAll(folder.dbPath()), before);
    EXPECT_EQ(
        QDir(folder.dirPath()).entryList(QDir::Files | QDir::Hidden), QStringList { QStringLiteral("clips.json") });
}

TEST_F(HistoryFolderTest, ImagePathsStayInsideTheImagesFolder)
{
    HistoryFolder folder(path(QStringLiteral("Zettly")));
    const QString outside = path(QStringLiteral("precious.png"));
    writeAll(outside, "keep");
    for (const char *hostile : { "../../precious.png", "../precious.png", "/etc/passwd", "..", ".", "" }) {
        EXPECT_TRUE(folder.imagePath(QString::fromUtf8(hostile)).isEmpty()) << hostile;
        folder.deleteImage(QString::fromUtf8(hostile));
    }
    EXPECT_TRUE(QFile::exists(outside));

    const QString name = QStringLiteral("0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9.png");
    EXPECT_EQ(folder.imagePath(name), folder.imagesDirPath() + u'/' + name);
    writeAll(folder.imagePath(name), "png");
    folder.deleteImage(name);
    EXPECT_FALSE(QFile::exists(folder.imagePath(name)));
    folder.deleteImage(name); // already gone: nothing happens
}

TEST_F(HistoryFolderTest, StartRemovesWhatAKilledSaveLeftBehind)
{
    const QString dir = path(QStringLiteral("Zettly"));
    QDir().mkpath(dir);
    const QStringList leftovers { QStringLiteral("clips.json.saving-Ab12Cd"),
        QStringLiteral("clips.json.saving-zzzzzz") };
    // The user's own copies stay, whatever they are called.
    const QStringList kept { QStringLiteral("clips.json"), QStringLiteral("clips.json.backup"),
        QStringLiteral("clips.json.saving-Ab12Cd7"), QStringLiteral("clips.json.unreadable-20260101-000000"),
        QStringLiteral("images"), QStringLiteral("other.json.saving-Ab12Cd") };
    for (const QString &name : leftovers + kept) {
        if (name != u"images")
            writeAll(dir + u'/' + name, "[]");
    }
    const HistoryFolder folder(dir);
    EXPECT_EQ(QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name), kept);
}
