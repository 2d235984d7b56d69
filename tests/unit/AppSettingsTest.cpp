// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppSettings.h"
#include "TestFolder.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace {
const QStringList allKeys { u"zettly.autoPaste"_s, u"zettly.historyLimit"_s, u"zettly.hotkey"_s,
    u"zettly.ignoreSecretApps"_s };

QJsonObject hotkeyData(const char *json)
{
    return QJsonObject { { u"data"_s, QString::fromLatin1(QByteArray(json).toBase64()) } };
}
} // namespace

class AppSettingsTest : public TestFolder {
protected:
    QString file() const { return path(u"Zettly/defaults.json"_s); }

    void store(const QJsonObject &values)
    {
        QDir().mkpath(path(u"Zettly"_s));
        writeAll(file(), QJsonDocument(values).toJson());
    }

    QJsonObject stored() const { return QJsonDocument::fromJson(readAll(file())).object(); }
};

TEST_F(AppSettingsTest, FirstAssignmentWritesAllFourKeysPrivately)
{
    // A fresh install has the defaults and writes nothing until a change.
    AppSettings settings(file());
    EXPECT_FALSE(QFile::exists(file()));
    settings.setAutoPaste(false);
    QJsonObject values = stored();
    EXPECT_EQ(values.keys(), allKeys);
    EXPECT_EQ(values.value(u"zettly.autoPaste"_s), QJsonValue(false));
    EXPECT_EQ(values.value(u"zettly.historyLimit"_s), QJsonValue(200));
    EXPECT_EQ(values.value(u"zettly.ignoreSecretApps"_s), QJsonValue(true));
    EXPECT_EQ(values.value(u"zettly.hotkey"_s), QJsonValue(hotkeyData(R"({"keyCode":9,"modifiers":4352})")));
    EXPECT_EQ(modeOf(file()), 0600u);
    EXPECT_EQ(modeOf(path(u"Zettly"_s)), 0700u);

    // Assigning the current value still writes, and keys of others survive.
    QJsonObject withForeign = stored();
    withForeign.insert(u"other.key"_s, u"kept"_s);
    store(withForeign);
    AppSettings reread(file());
    const QDateTime backdated = backdate(file());
    reread.setHistoryLimit(reread.historyLimit());
    EXPECT_GT(QFileInfo(file()).lastModified(), backdated);
    EXPECT_EQ(stored().value(u"other.key"_s).toString(), u"kept"_s);

    // Values persist across instances; no range is enforced.
    reread.setHistoryLimit(-3);
    reread.setHotkey({ 49, 2304 });
    reread.setIgnoreSecretApps(false);
    const AppSettings later(file());
    EXPECT_EQ(later.historyLimit(), -3);
    EXPECT_EQ(later.hotkey(), (HotKeyConfig { 49, 2304 }));
    EXPECT_FALSE(later.autoPaste());
    EXPECT_FALSE(later.ignoreSecretApps());
}

TEST_F(AppSettingsTest, UnusableStoredValuesFallBack)
{
    const QString limit = u"zettly.historyLimit"_s;
    const QString hotkey = u"zettly.hotkey"_s;
    const QString autoPaste = u"zettly.autoPaste"_s;
    const QString ignore = u"zettly.ignoreSecretApps"_s;
    // Unnamed expectations are the defaults.
    struct Case {
        const char *name;
        QJsonObject values;
        HotKeyConfig hotkey { 9, 4352 };
        qint64 limit = 200;
        bool autoPaste = true;
        bool ignoreSecretApps = true;
    };
    const Case cases[] = {
        { .name = "limit 0 means default", .values = { { limit, 0 } } },
        { .name = "limit 500 kept", .values = { { limit, 500 } }, .limit = 500 },
        { .name = "limit as text of digits", .values = { { limit, u"50"_s } }, .limit = 50 },
        { .name = "limit as words", .values = { { limit, u"many"_s } } },
        { .name = "limit as fraction", .values = { { limit, 75.9 } }, .limit = 75 },
        // What the data may hold is HotKeyConfig's rule, tested there.
        { .name = "hotkey stored as a string", .values = { { hotkey, uR"({"keyCode":1,"modifiers":1})"_s } } },
        { .name = "hotkey data not base64", .values = { { hotkey, QJsonObject { { u"data"_s, u"%%%"_s } } } } },
        { .name = "booleans as strings", .values = { { autoPaste, u"false"_s }, { ignore, 0 } } },
        { .name = "booleans false",
            .values = { { autoPaste, false }, { ignore, false } },
            .autoPaste = false,
            .ignoreSecretApps = false },
    };
    for (const Case &c : cases) {
        store(c.values);
        const AppSettings settings(file());
        EXPECT_EQ(settings.hotkey(), c.hotkey) << c.name;
        EXPECT_EQ(settings.historyLimit(), c.limit) << c.name;
        EXPECT_EQ(settings.autoPaste(), c.autoPaste) << c.name;
        EXPECT_EQ(settings.ignoreSecretApps(), c.ignoreSecretApps) << c.name;
    }
}

TEST_F(AppSettingsTest, UnreadableFileIsKeptAsideAndReplacedOnFirstChange)
{
    QDir().mkpath(path(u"Zettly"_s));
    writeAll(file(), "{\"zettly.autoPaste\": fal");
    AppSettings settings(file());
    EXPECT_TRUE(settings.autoPaste());
    settings.setAutoPaste(false);
    EXPECT_EQ(stored().keys(), allKeys);
    const QStringList copies = QDir(path(u"Zettly"_s)).entryList({ u"defaults.json.unreadable-*"_s });
    ASSERT_EQ(copies.size(), 1);
    EXPECT_EQ(readAll(path(u"Zettly/"_s) + copies.first()), QByteArray("{\"zettly.autoPaste\": fal"));
}

TEST_F(AppSettingsTest, NoticeBeforeChangeAndShortcutHookAfterWriting)
{
    AppSettings settings(file());
    QList<bool> seenBefore;
    QObject::connect(&settings, &AppSettings::aboutToChange, [&] { seenBefore.append(settings.autoPaste()); });
    settings.setAutoPaste(false);
    EXPECT_EQ(seenBefore, QList<bool> { true });

    // The hot key is registered anew only once the four keys are on disk, and
    // even when the shortcut is unchanged.
    QList<QJsonObject> fileAtRegistration;
    QObject::connect(&settings, &AppSettings::hotkeyChanged, [&](const HotKeyConfig &hotkey) {
        EXPECT_EQ(hotkey, settings.hotkey());
        fileAtRegistration.append(stored());
    });
    QSignalSpy changed(&settings, &AppSettings::changed);
    settings.setHotkey({ 12, 256 });
    settings.setHotkey({ 12, 256 });
    settings.setHistoryLimit(20);
    ASSERT_EQ(fileAtRegistration.size(), 2);
    EXPECT_EQ(fileAtRegistration.first().keys(), allKeys);
    EXPECT_EQ(fileAtRegistration.first().value(u"zettly.hotkey"_s),
        QJsonValue(hotkeyData(R"({"keyCode":12,"modifiers":256})")));
    EXPECT_EQ(changed.count(), 3);
}
