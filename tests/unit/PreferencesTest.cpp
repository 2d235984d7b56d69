// SPDX-License-Identifier: GPL-3.0-or-later
#include "AboutTab.h"
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "FixedKeyLayout.h"
#include "GeneralTab.h"
#include "GlobalHotKey.h"
#include "HotKeyTranslator.h"
#include "MemoryKeyGrabber.h"
#include "PasteKeystroke.h"
#include "PrivacyTab.h"
#include "SettingsView.h"
#include "ShortcutTab.h"

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>

namespace {

class FakeKeystroke : public PasteKeystroke {
public:
    bool isTrusted() const override { return trusted; }
    void sendPaste(const RunningApp &) override { }

    bool trusted = false;
};

// X key codes under Xvfb's evdev keymap.
constexpr quint32 xEscape = 9;
constexpr quint32 xSpace = 65;
constexpr quint32 xA = 38;
constexpr quint32 xLeftAlt = 64;

struct KeyPress {
    int key;
    Qt::KeyboardModifiers modifiers;
    quint32 nativeScanCode;
};

class PreferencesTest : public ::testing::Test {
protected:
    QString settingsPath() const { return home.filePath(QStringLiteral("defaults.json")); }
    // What a restarted app would read.
    AppSettings reread() const { return AppSettings(settingsPath()); }

    // As the keyboard delivers it: to the widget with the focus.
    bool press(const KeyPress &key)
    {
        QWidget *target = QApplication::focusWidget() ? QApplication::focusWidget() : view.shortcutTab();
        QKeyEvent event(QEvent::KeyPress, key.key, key.modifiers, key.nativeScanCode, 0, 0);
        const int before = keysReachingControls;
        QApplication::sendEvent(target, &event);
        return keysReachingControls > before;
    }

    void showTab(int index)
    {
        view.tabs()->setCurrentIndex(index);
        QCoreApplication::processEvents();
    }

    QTemporaryDir home;
    AppSettings settings { settingsPath() };
    ClipboardStore store { settings, home.filePath(QStringLiteral("Zettly")) };
    FakeKeystroke keystroke;
    FixedKeyLayout layout { { { 0, QStringLiteral("a") }, { 9, QStringLiteral("v") } } };
    SettingsView view { settings, store, &keystroke, &layout };
    int keysReachingControls = 0;
};

// Counts the key presses that get past the recorder to a control.
class KeyCounter : public QObject {
public:
    explicit KeyCounter(int &count)
        : m_count(count)
    {
    }
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress)
            ++m_count;
        return false;
    }

private:
    int &m_count;
};

} // namespace

TEST_F(PreferencesTest, HistoryLimitStepsBy20Within20To2000)
{
    GeneralTab &general = *view.generalTab();
    const struct {
        qint64 stored;
        int steps;
        qint64 expected;
    } rows[] = {
        { 200, 1, 220 },
        { 200, -1, 180 },
        { 20, -1, 20 },
        { 2000, 1, 2000 },
        { 40, -5, 20 },
    };
    for (const auto &row : rows) {
        settings.setHistoryLimit(row.stored);
        general.historyLimitBox()->stepBy(row.steps);
        EXPECT_EQ(settings.historyLimit(), row.expected) << row.stored << " by " << row.steps;
        EXPECT_EQ(general.historyLimitText()->text(), QString::number(row.expected) + QStringLiteral(" items"));
    }
    // A stored limit the box cannot show is shown as it is, and not rewritten.
    settings.setHistoryLimit(5000);
    EXPECT_EQ(general.historyLimitText()->text(), QStringLiteral("5000 items"));
    EXPECT_EQ(reread().historyLimit(), 5000);
}

// The permission is re-read only while the General tab is on screen, at
// once when it comes back.
TEST_F(PreferencesTest, TrustPollingFollowsTheTab)
{
    GeneralTab &general = *view.generalTab();
    EXPECT_FALSE(general.isPollingStatus());
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    EXPECT_TRUE(general.isPollingStatus());
    EXPECT_EQ(general.statusText()->text(), QStringLiteral("Non autorisé"));
    EXPECT_TRUE(general.untrustedHint()->isVisibleTo(&general));

    showTab(1);
    EXPECT_FALSE(general.isPollingStatus());
    keystroke.trusted = true;
    showTab(0);
    EXPECT_TRUE(general.isPollingStatus());
    EXPECT_EQ(general.statusText()->text(), QStringLiteral("Autorisé"));
    EXPECT_FALSE(general.untrustedHint()->isVisibleTo(&general));

    keystroke.trusted = false;
    EXPECT_TRUE(QTest::qWaitFor([&] { return general.statusText()->text() == QStringLiteral("Non autorisé"); }, 5000));
    EXPECT_TRUE(general.untrustedHint()->isVisibleTo(&general));

    // The request reads the status again at once: there is nothing to prompt.
    keystroke.trusted = true;
    general.requestButton()->click();
    EXPECT_EQ(general.statusText()->text(), QStringLiteral("Autorisé"));

    view.close();
    EXPECT_FALSE(general.isPollingStatus());
    // Without a keystroke there is nothing to trust.
    general.setPasteKeystroke(nullptr);
    general.requestButton()->click();
    EXPECT_EQ(general.statusText()->text(), QStringLiteral("Non autorisé"));
}

TEST_F(PreferencesTest, RecordsAShortcutFromAKeyPress)
{
    ShortcutTab &tab = *view.shortcutTab();
    // The app's global shortcut follows the settings, as the core has it.
    MemoryKeyGrabber grabber;
    GlobalHotKey hotKey(grabber);
    const auto registerSetting
        = [&] { hotKey.registerHotKey(settings.hotkey().keyCode, settings.hotkey().modifiers, [] {}); };
    QObject::connect(&settings, &AppSettings::hotkeyChanged, &hotKey, registerSetting);
    KeyCounter counter(keysReachingControls);
    tab.installEventFilter(&counter);
    tab.recordButton()->installEventFilter(&counter);

    const HotKeyConfig standard = HotKeyConfig::defaultShortcut();
    const HotKeyConfig optionCommandSpace { .keyCode = 49, .modifiers = 2304 };
    const HotKeyConfig plainA { .keyCode = 0, .modifiers = 0 };
    const auto click = [&] { tab.recordButton()->click(); };
    const auto reset = [&] { tab.resetButton()->click(); };
    const auto key = [&](KeyPress press) { return [this, press] { EXPECT_FALSE(this->press(press)); }; };
    // A modifier alone is no shortcut: the recorder lets it through.
    const auto alt = [&] { EXPECT_TRUE(press({ Qt::Key_Alt, Qt::AltModifier, xLeftAlt })); };
    const struct {
        const char *name;
        std::vector<std::function<void()>> actions;
        HotKeyConfig expected;
        bool recording;
    } rows[] = {
        { "Escape", { click, key({ Qt::Key_Escape, Qt::NoModifier, xEscape }) }, standard, false },
        { "Alt+Super+Space", { click, key({ Qt::Key_Space, Qt::AltModifier | Qt::MetaModifier, xSpace }) },
            optionCommandSpace, false },
        { "a plain letter", { click, key({ Qt::Key_A, Qt::NoModifier, xA }) }, plainA, false },
        { "a modifier alone", { click, alt }, standard, true },
        { "the button twice", { click, click }, standard, false },
        { "reset while recording", { [&] { settings.setHotkey(optionCommandSpace); }, click, reset }, standard, true },
        { "a key after reset", { click, reset, key({ Qt::Key_A, Qt::NoModifier, xA }) }, plainA, false },
        { "leaving the tab", { click, [&] { showTab(2); } }, standard, false },
    };

    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        settings.setHotkey(standard);
        showTab(1);
        tab.recordButton()->setFocus();
        for (const auto &action : row.actions) {
            action();
            // Nothing grabbed while recording: the current shortcut must
            // reach us to be recorded.
            EXPECT_EQ(grabber.grabbed().has_value(), !tab.isRecording());
        }
        EXPECT_EQ(settings.hotkey(), row.expected);
        // The glyphs themselves are HotKeyTranslator's, tested there.
        EXPECT_EQ(tab.shortcutText()->text(),
            HotKeyTranslator::displayString(row.expected.keyCode, row.expected.modifiers, &layout));
        EXPECT_EQ(tab.isRecording(), row.recording);
        EXPECT_EQ(tab.recordButton()->text(),
            row.recording ? QStringLiteral("Appuyez sur le raccourci…  (Échap pour annuler)")
                          : QStringLiteral("Modifier le raccourci"));
        if (tab.isRecording())
            click();
        EXPECT_EQ(grabber.grabbed(), std::pair(settings.hotkey().keyCode, settings.hotkey().modifiers));
    }
    // Closing the window ends a recording too.
    showTab(1);
    click();
    view.close();
    EXPECT_FALSE(tab.isRecording());
}

// The limit and the shortcut have tests of their own.
TEST_F(PreferencesTest, EachSwitchIsWrittenAndFollowsTheSettings)
{
    GeneralTab &general = *view.generalTab();
    QCheckBox &ignoreSecretApps = *view.privacyTab()->ignoreSecretAppsBox();
    ASSERT_TRUE(general.autoPasteBox()->isChecked());
    ASSERT_TRUE(ignoreSecretApps.isChecked());

    general.autoPasteBox()->click();
    EXPECT_FALSE(reread().autoPaste());
    ignoreSecretApps.click();
    EXPECT_FALSE(reread().ignoreSecretApps());
    ignoreSecretApps.click();
    EXPECT_TRUE(reread().ignoreSecretApps());
    // A change made elsewhere shows in the controls.
    settings.setAutoPaste(true);
    EXPECT_TRUE(general.autoPasteBox()->isChecked());
}

TEST(AboutTab, VersionTextStandsInForMissingValues)
{
    const struct {
        QString version;
        QString build;
        QString expected;
    } rows[] = {
        { QStringLiteral("1.2.0"), QStringLiteral("42"), QStringLiteral("v1.2.0 (build 42)") },
        { QStringLiteral("1.2.0"), {}, QStringLiteral("v1.2.0 (build ?)") },
        { {}, QStringLiteral("42"), QStringLiteral("v? (build 42)") },
        { {}, {}, QStringLiteral("v? (build ?)") },
    };
    for (const auto &row : rows) {
        AboutTab about(row.version, row.build);
        EXPECT_EQ(about.versionLabel()->text(), row.expected);
    }
}

// The line saying what makes the shortcut work follows each change of route.
TEST_F(PreferencesTest, ShortcutTabSaysWhichRouteApplies)
{
    view.show();
    ShortcutTab &tab = *view.shortcutTab();
    showTab(1);
    const struct {
        ShortcutTab::Route route;
        const char *part;
    } rows[] = {
        { ShortcutTab::Route::Portal, "(portail GlobalShortcuts)" },
        { ShortcutTab::Route::KeyGrab, nullptr },
        { ShortcutTab::Route::DesktopCommand, "associez «\u00a0zettly --toggle\u00a0» à un raccourci" },
        { ShortcutTab::Route::KeyGrab, nullptr },
    };
    for (const auto &row : rows) {
        tab.setRoute(row.route);
        EXPECT_EQ(tab.routeText()->isVisible(), row.part != nullptr) << int(row.route);
        if (row.part) {
            EXPECT_TRUE(tab.routeText()->text().contains(QString::fromUtf8(row.part))) << int(row.route);
        }
    }
}
