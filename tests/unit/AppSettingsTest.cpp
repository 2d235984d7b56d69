// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppSettings.h"
#include "TestFolder.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>

namespace {
const QStringList allKeys { QStringLiteral("zettly.autoPaste"), QStringLiteral("zettly.historyLimit"),
    QStringLiteral("zettly.hotkey"), QStringLiteral("zettly.ignoreSecretApps") };

QJsonObject hotkeyData(const char *json)
{
    return QJsonObject { { QStringLiteral("data"), QString::fromLatin1(QByteArray(json).toBase64()) } };
}
} // namespace

class AppSettingsTest : public TestFolder {
protected:
    QString file() const { return path(QStringLiteral("Zettly/defaults.json")); }

    void store(const QJsonObject &values)
    {
        QDir().mkpath(path(QStringLiteral("Zettly")));
        writeAll(file(), QJsonDocument(values).toJson());
    }

    QJsonObject stored() const { return QJsonDocument::fromJson(readAll(file())).object(); }
};

TEST_F(AppSettingsTest, FreshInstallHasDefaultsAndWritesNothing)
{
    const AppSettings settings(file());
    EXPECT_EQ(settings.hotkey(), (HotKeyConfig { 9, 4352 }));
    EXPECT_EQ(settings.historyLimit(), 200);
    EXPECT_TRUE(settings.autoPaste());
    EXPECT_TRUE(settings.ignoreSecretApps());
    EXPECT_FALSE(QFile::exists(file()));
}

TEST_F(AppSettingsTest, EveryAssignmentWritesAllFourKeysPrivately)
{
    AppSettings settings(file());
    settings.setAutoPaste(false);
    QJsonObject values = stored();
    EXPECT_EQ(values.keys(), allKeys);
    EXPECT_EQ(values.value(QStringLiteral("zettly.autoPaste")), QJsonValue(false));
    EXPECT_EQ(values.value(QStringLiteral("zettly.historyLimit")), QJsonValue(200));
    EXPECT_EQ(values.value(QStringLiteral("zettly.ignoreSecretApps")), QJsonValue(true));
    EXPECT_EQ(
        values.value(QStringLiteral("zettly.hotkey")), QJsonValue(hotkeyData(R"({"keyCode":9,"modifiers":4352})")));
    EXPECT_EQ(modeOf(file()), 0600u);
    EXPECT_EQ(modeOf(path(QStringLiteral("Zettly"))), 0700u);

    // Assigning the current value still writes, and keys of others survive.
    QJsonObject withForeign = stored();
    withForeign.insert(QStringLiteral("other.key"), QStringLiteral("kept"));
    store(withForeign);
    AppSettings reread(file());
    backdate(file());
    reread.setHistoryLimit(reread.historyLimit());
    EXPECT_GT(modified(file()), QDateTime::currentDateTime().addSecs(-60));
    EXPECT_EQ(stored().value(QStringLiteral("other.key")).toString(), QStringLiteral("kept"));

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
    struct Case {
        const char *name;
        QJsonObject values;
        HotKeyConfig hotkey;
        qint64 limit;
        bool autoPaste;
        bool ignoreSecretApps;
    };
    const HotKeyConfig standard { 9, 4352 };
    const Case cases[] = {
        { "limit 0 means default", { { QStringLiteral("zettly.historyLimit"), 0 } }, standard, 200, true, true },
        { "limit 500 kept", { { QStringLiteral("zettly.historyLimit"), 500 } }, standard, 500, true, true },
        { "limit as text of digits", { { QStringLiteral("zettly.historyLimit"), QStringLiteral("50") } }, standard, 50,
            true, true },
        { "limit as words", { { QStringLiteral("zettly.historyLimit"), QStringLiteral("many") } }, standard, 200, true,
            true },
        { "limit as fraction", { { QStringLiteral("zettly.historyLimit"), 75.9 } }, standard, 75, true, true },
        { "hotkey without modifiers", { { QStringLiteral("zettly.hotkey"), hotkeyData(R"({"keyCode":49})") } },
            standard, 200, true, true },
        { "hotkey members reordered",
            { { QStringLiteral("zettly.hotkey"), hotkeyData(R"({"modifiers":2304,"keyCode":49})") } }, { 49, 2304 },
            200, true, true },
        { "hotkey out of range",
            { { QStringLiteral("zettly.hotkey"), hotkeyData(R"({"keyCode":4294967296,"modifiers":1})") } }, standard,
            200, true, true },
        { "hotkey stored as a string",
            { { QStringLiteral("zettly.hotkey"), QStringLiteral(R"({"keyCode":1,"modifiers":1})") } }, standard, 200,
            true, true },
        { "hotkey data not base64",
            { { QStringLiteral("zettly.hotkey"), QJsonObject { { QStringLiteral("data"), QStringLiteral("%%%") } } } },
            standard, 200, true, true },
        { "booleans as strings",
            { { QStringLiteral("zettly.autoPaste"), QStringLiteral("false") },
                { QStringLiteral("zettly.ignoreSecretApps"), 0 } },
            standard, 200, true, true },
        { "booleans false",
            { { QStringLiteral("zettly.autoPaste"), false }, { QStringLiteral("zettly.ignoreSecretApps"), false } },
            standard, 200, false, false },
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
    QDir().mkpath(path(QStringLiteral("Zettly")));
    writeAll(file(), "{\"zettly.autoPaste\": fal");
    AppSettings settings(file());
    EXPECT_TRUE(settings.autoPaste());
    settings.setAutoPaste(false);
    EXPECT_EQ(stored().keys(), allKeys);
    const QStringList copies
        = QDir(path(QStringLiteral("Zettly"))).entryList({ QStringLiteral("defaults.json.unreadable-*") });
    ASSERT_EQ(copies.size(), 1);
    EXPECT_EQ(readAll(path(QStringLiteral("Zettly/")) + copies.first()), QByteArray("{\"zettly.autoPaste\": fal"));
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
    EXPECT_EQ(fileAtRegistration.first().value(QStringLiteral("zettly.hotkey")),
        QJsonValue(hotkeyData(R"({"keyCode":12,"modifiers":256})")));
    EXPECT_EQ(changed.count(), 3);
}
