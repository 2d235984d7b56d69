// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryFolder.h"
#include "HistoryCodec.h"
#include "TestFolder.h"

#include <QDir>
#include <QScopeGuard>

#include <csignal>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

using HistoryFolderTest = TestFolder;

TEST_F(HistoryFolderTest, FirstStartMakesPrivateFoldersAndSavesPrivately)
{
    // An open umask, restored however the test ends.
    const auto restoreUmask = qScopeGuard([previous = ::umask(0)] { ::umask(previous); });
    const QString dir = path(u"deep/Zettly"_s);
    HistoryFolder folder(dir);
    EXPECT_TRUE(QFileInfo(folder.imagesDirPath()).isDir());
    EXPECT_EQ(folder.dbPath(), dir + u"/clips.json"_s);
    EXPECT_EQ(modeOf(dir), 0700u);
    EXPECT_EQ(modeOf(folder.imagesDirPath()), 0700u);
    EXPECT_TRUE(folder.load().isEmpty());
    EXPECT_FALSE(QFile::exists(folder.dbPath())) << "loading alone must not write";

    ASSERT_TRUE(folder.save({ textClip(u"a"_s) }));
    EXPECT_EQ(modeOf(folder.dbPath()), 0600u);
    // Exactly the file and the images folder: no temporary left behind.
    EXPECT_EQ(QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
        (QStringList { u"clips.json"_s, u"images"_s }));

    // A folder made by an older version with open permissions is closed.
    const QString open = path(u"open"_s);
    QDir().mkpath(open);
    QFile::setPermissions(open, QFileDevice::Permissions(0x7777));
    const HistoryFolder reopened(open);
    EXPECT_EQ(modeOf(open), 0700u);
}

TEST_F(HistoryFolderTest, UndecodableFileIsKeptAsideBeforeAnySave)
{
    HistoryFolder folder(path(u"Zettly"_s));
    const QByteArray damaged = R"([{"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a",)"
                               R"("pinned":false,"createdAt":1},{"id":"1F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9",)"
                               R"("kind":"link","preview":"b","pinned":false,"createdAt":2}])";
    writeAll(folder.dbPath(), damaged);
    EXPECT_TRUE(folder.load().isEmpty());

    const QStringList copies = QDir(folder.dirPath()).entryList({ u"clips.json.unreadable-*"_s });
    ASSERT_EQ(copies.size(), 1);
    const QString copy = folder.dirPath() + u'/' + copies.first();
    EXPECT_EQ(readAll(copy), damaged);
    EXPECT_EQ(modeOf(copy), 0600u);

    // The first save replaces clips.json but leaves the copy alone; a second
    // unreadable load the same second does not overwrite the first copy.
    ASSERT_TRUE(folder.save({ textClip(u"new"_s) }));
    EXPECT_EQ(readAll(copy), damaged);
    writeAll(folder.dbPath(), "not json");
    EXPECT_TRUE(folder.load().isEmpty());
    EXPECT_EQ(QDir(folder.dirPath()).entryList({ u"clips.json.unreadable-*"_s }).size(), 2);
    EXPECT_EQ(readAll(copy), damaged);

    // What cannot even be opened is moved aside too, before any save.
    QDir().mkdir(folder.dbPath());
    EXPECT_TRUE(folder.load().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(folder.dbPath()));
    EXPECT_EQ(QDir(folder.dirPath()).entryList({ u"clips.json.unreadable-*"_s }).size(), 3);
}

TEST_F(HistoryFolderTest, FailedSaveKeepsThePreviousFile)
{
    HistoryFolder folder(path(u"Zettly"_s));
    ASSERT_TRUE(folder.save({ textClip(u"kept"_s) }));
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
    EXPECT_EQ(QDir(folder.dirPath()).entryList(QDir::Files | QDir::Hidden), QStringList { u"clips.json"_s });
}

TEST_F(HistoryFolderTest, ImagePathsStayInsideTheImagesFolder)
{
    HistoryFolder folder(path(u"Zettly"_s));
    const QString outside = path(u"precious.png"_s);
    writeAll(outside, "keep");
    for (const char *hostile : { "../../precious.png", "../precious.png", "/etc/passwd", "..", ".", "" }) {
        EXPECT_TRUE(folder.imagePath(QString::fromUtf8(hostile)).isEmpty()) << hostile;
        folder.deleteImage(QString::fromUtf8(hostile));
    }
    EXPECT_TRUE(QFile::exists(outside));

    const QString name = u"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9.png"_s;
    EXPECT_EQ(folder.imagePath(name), folder.imagesDirPath() + u'/' + name);
    writeAll(folder.imagePath(name), "png");
    folder.deleteImage(name);
    EXPECT_FALSE(QFile::exists(folder.imagePath(name)));
    folder.deleteImage(name); // already gone: nothing happens
}

TEST_F(HistoryFolderTest, StartRemovesWhatAKilledSaveLeftBehind)
{
    const QString dir = path(u"Zettly"_s);
    QDir().mkpath(dir);
    const QStringList leftovers { u"clips.json.saving-Ab12Cd"_s, u"clips.json.saving-zzzzzz"_s };
    // The user's own copies stay, whatever they are called.
    const QStringList kept { u"clips.json"_s, u"clips.json.backup"_s, u"clips.json.saving-Ab12Cd7"_s,
        u"clips.json.unreadable-20260101-000000"_s, u"images"_s, u"other.json.saving-Ab12Cd"_s };
    for (const QString &name : leftovers + kept) {
        if (name != u"images")
            writeAll(dir + u'/' + name, "[]");
    }
    const HistoryFolder folder(dir);
    EXPECT_EQ(QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name), kept);
}
