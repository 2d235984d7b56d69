// SPDX-License-Identifier: GPL-3.0-or-later
#include "HotKeyTranslator.h"
#include "FixedKeyLayout.h"
#include "HotKeyConfig.h"
#include "KeyPositions.h"

#include <gtest/gtest.h>

using HotKeyTranslator::carbonModifiers;
using HotKeyTranslator::displayString;
using HotKeyTranslator::keyName;

// Fixed glyph order, fixed names before the layout's character, the full
// upper-case mapping, and the code when there is no character.
TEST(HotKeyTranslatorTest, DisplayStringPutsGlyphsInFixedOrder)
{
    const FixedKeyLayout us({ { 9, QStringLiteral("v") }, { 12, QStringLiteral("q") }, { 0, QStringLiteral("é") },
        { 1, QStringLiteral("ß") }, { 2, QString() }, { 36, QStringLiteral("x") } });
    const struct {
        quint32 keyCode;
        quint32 modifiers;
        const char *expected;
    } cases[] = {
        { 9, 4352, "⌃⌘V" },
        { 49, 2304, "⌥⌘Space" },
        { 36, 512, "⇧↩" },
        { 9, 4864, "⌃⇧⌘V" },
        { 123, 0, "←" },
        { 12, 0xFFFFFFFF, "⌃⌥⇧⌘Q" },
        { 12, 1024, "Q" }, // Caps Lock and other bits show nothing
        { 200, 0, "key(200)" },
        { 10, 256, "⌘key(10)" },
        { 0, 0, "É" },
        { 1, 0, "SS" },
        { 2, 0, "key(2)" },
    };
    for (const auto &c : cases)
        EXPECT_EQ(displayString(c.keyCode, c.modifiers, &us), QString::fromUtf8(c.expected)) << c.keyCode;
    // No layout at all.
    EXPECT_EQ(keyName(9, nullptr), QStringLiteral("key(9)"));
    EXPECT_EQ(keyName(4294967295u, nullptr), QStringLiteral("key(4294967295)"));
}

TEST(HotKeyTranslatorTest, CarbonModifiersKeepsOnlyTheFourModifiers)
{
    EXPECT_EQ(carbonModifiers(Qt::MetaModifier | Qt::ShiftModifier | Qt::KeypadModifier), 768u);
    EXPECT_EQ(carbonModifiers(Qt::NoModifier), 0u);
    EXPECT_EQ(carbonModifiers(Qt::ControlModifier | Qt::MetaModifier), 4352u);
    EXPECT_EQ(carbonModifiers(Qt::AltModifier | Qt::GroupSwitchModifier), 2048u);
}

// Keysym names: fixed ones by position, a letter or digit from the layout in
// lower case, nothing for a key that has neither.
TEST(HotKeyTranslatorTest, ShortcutStringNamesKeysymsAfterModifiers)
{
    const FixedKeyLayout layout(
        { { 9, QStringLiteral("V") }, { 18, QStringLiteral("&") }, { 0, QStringLiteral("é") } });
    const struct {
        quint32 keyCode;
        quint32 modifiers;
        const char *expected;
    } cases[] = {
        { 9, 4352, "CTRL+LOGO+v" },
        { 9, 0xFFFFFFFF, "CTRL+ALT+SHIFT+LOGO+v" },
        { 36, 512, "SHIFT+Return" },
        { 0x7A, 0, "F1" },
        { 0x6F, 2048, "ALT+F12" },
        { 18, 4352, nullptr },
        { 0, 4352, nullptr },
        { 200, 4352, nullptr },
    };
    for (const auto &c : cases) {
        const std::optional<QString> text = HotKeyTranslator::shortcutString(c.keyCode, c.modifiers, &layout);
        EXPECT_EQ(text, c.expected ? std::optional(QString::fromUtf8(c.expected)) : std::nullopt) << c.keyCode;
    }
    EXPECT_EQ(HotKeyTranslator::shortcutString(9, 4352, nullptr), std::nullopt);
}

TEST(HotKeyConfigTest, JsonIsExactAndStrict)
{
    EXPECT_EQ(HotKeyConfig::defaultShortcut().toJson(), QByteArray(R"({"keyCode":9,"modifiers":4352})"));
    EXPECT_EQ(HotKeyConfig::fromJson(R"({"keyCode":9,"modifiers":4352})"), HotKeyConfig::defaultShortcut());
    EXPECT_EQ(HotKeyConfig::fromJson(R"({"modifiers":4294967295,"extra":[1],"keyCode":0})"),
        (HotKeyConfig { 0, 4294967295u }));
    EXPECT_EQ((HotKeyConfig { 4294967295u, 1 }).toJson(), QByteArray(R"({"keyCode":4294967295,"modifiers":1})"));
    for (const char *bad : { R"({"keyCode":9})", R"({"modifiers":4352})", R"({"keyCode":-1,"modifiers":0})",
             R"({"keyCode":4294967296,"modifiers":0})", R"({"keyCode":9.5,"modifiers":0})",
             R"({"keyCode":"9","modifiers":0})", R"({"keyCode":null,"modifiers":0})", R"([9,4352])", "", "{",
             "{\"keyCode\":1e400,\"modifiers\":0}" })
        EXPECT_FALSE(HotKeyConfig::fromJson(bad)) << bad;
}

TEST(KeyPositionsTest, MapsBothWaysOneToOne)
{
    // X key codes checked on a real server: v is 55, q 24, a 38, Return 36,
    // Escape 9, Space 65, Backspace 22, Up 111.
    const std::pair<quint32, quint32> known[] = { { 9, 55 }, { 12, 24 }, { 0, 38 }, { 36, 36 }, { 53, 9 }, { 49, 65 },
        { 51, 22 }, { 126, 111 }, { 123, 113 } };
    for (const auto &[virtualKey, xKey] : known) {
        EXPECT_EQ(KeyPositions::evdevCode(virtualKey), xKey - 8) << virtualKey;
        EXPECT_EQ(KeyPositions::virtualKeyCode(xKey - 8), virtualKey) << virtualKey;
    }
    for (quint32 code = 0; code < 256; ++code) {
        if (const auto evdev = KeyPositions::evdevCode(code)) {
            EXPECT_EQ(KeyPositions::virtualKeyCode(*evdev), code) << code;
        }
    }
    EXPECT_FALSE(KeyPositions::evdevCode(200));
    EXPECT_FALSE(KeyPositions::evdevCode(0x10000 + 9));
}
