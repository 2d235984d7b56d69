// SPDX-License-Identifier: GPL-3.0-or-later
#include "XkbKeyLayout.h"
#include "HotKeyConfig.h"
#include "HotKeyTranslator.h"
#include "OtherClient.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>

static void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace {

using HotKeyTranslator::displayString;
using HotKeyTranslator::keyName;

constexpr quint32 controlCommand = HotKeyConfig::Control | HotKeyConfig::Command;

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// Locks Caps Lock and a layout group as a desktop's layout switcher does.
// (xdotool cannot: it restores the group it found after every key it sends.)
// The checked request returns once the server has applied it.
bool lockKeyboard(bool capsLock, uint8_t group)
{
    return OtherClient().lockModifiers(XCB_MOD_MASK_LOCK, capsLock ? XCB_MOD_MASK_LOCK : 0, group);
}

class XkbKeyLayoutTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(useLayouts(QStringLiteral("us")));
        ASSERT_TRUE(lockKeyboard(false, 0));
        layout = XkbKeyLayout::open();
        ASSERT_NE(layout, nullptr);
    }

    std::unique_ptr<XkbKeyLayout> layout;
};

TEST_F(XkbKeyLayoutTest, FollowsLayoutChangesWithTheSameObject)
{
    EXPECT_EQ(displayString(12, controlCommand, layout.get()), text("⌃⌘Q"));
    ASSERT_TRUE(useLayouts(QStringLiteral("fr")));
    EXPECT_EQ(displayString(12, controlCommand, layout.get()), text("⌃⌘A"));
    EXPECT_EQ(keyName(0, layout.get()), text("Q"));
    EXPECT_EQ(keyName(41, layout.get()), text("M"));
    EXPECT_EQ(keyName(39, layout.get()), text("Ù"));
    // The key right of P is a dead circumflex on French: no character.
    EXPECT_EQ(displayString(33, controlCommand, layout.get()), text("⌃⌘key(33)"));
    ASSERT_TRUE(useLayouts(QStringLiteral("us")));
    EXPECT_EQ(displayString(12, controlCommand, layout.get()), text("⌃⌘Q"));
}

// Checks the table of key positions against the keys of a real US keymap,
// and the names of keys without a character.
TEST_F(XkbKeyLayoutTest, UsKeyPositionsTypeTheirUsCharacters)
{
    const quint32 codes[] = { 0x00, 0x0B, 0x08, 0x02, 0x0E, 0x03, 0x05, 0x04, 0x22, 0x26, 0x28, 0x25, 0x2E, 0x2D, 0x1F,
        0x23, 0x0C, 0x0F, 0x01, 0x11, 0x20, 0x09, 0x0D, 0x07, 0x10, 0x06, 0x12, 0x13, 0x14, 0x15, 0x17, 0x16, 0x1A,
        0x1C, 0x19, 0x1D, 0x1B, 0x18, 0x21, 0x1E, 0x2A, 0x29, 0x27, 0x32, 0x2B, 0x2F, 0x2C, 0x0A, 0x31, 0x43, 0x45,
        0x4E, 0x4B };
    // The same keys, in the same order; the ISO key beside left Shift is "<".
    const QString characters = text("abcdefghijklmnopqrstuvwxyz1234567890-=[]\\;'`,./< *+-/");
    ASSERT_EQ(characters.size(), qsizetype(std::size(codes)));
    for (qsizetype i = 0; i < characters.size(); ++i)
        EXPECT_EQ(layout->character(codes[i]), QString(characters.at(i))) << "virtual key code " << codes[i];

    // No position at all, a key the US keymap leaves empty (the Yen key of
    // Japanese keyboards), and a key whose symbol is no character (Home).
    for (const quint32 keyCode : { 52u, 93u, 115u })
        EXPECT_EQ(keyName(keyCode, layout.get()), QStringLiteral("key(") + QString::number(keyCode) + u')');
    // Function keys are named as printed on them.
    EXPECT_EQ(keyName(122, layout.get()), text("F1"));
    EXPECT_EQ(displayString(0x6F, controlCommand, layout.get()), text("⌃⌘F12"));
}

TEST_F(XkbKeyLayoutTest, CapsLockIsIgnoredAndTheLockedGroupFollowed)
{
    ASSERT_TRUE(lockKeyboard(true, 0));
    EXPECT_EQ(layout->character(12), text("q"));
    EXPECT_EQ(displayString(12, controlCommand, layout.get()), text("⌃⌘Q"));

    ASSERT_TRUE(useLayouts(QStringLiteral("us,fr")));
    ASSERT_TRUE(lockKeyboard(false, 1));
    EXPECT_EQ(layout->character(12), text("a"));
    EXPECT_EQ(layout->character(33), std::nullopt);
    // Keypad keys are defined in the first group only.
    EXPECT_EQ(layout->character(0x43), text("*"));
    ASSERT_TRUE(lockKeyboard(false, 0));
    EXPECT_EQ(layout->character(12), text("q"));
}

TEST(XkbKeyLayoutOpen, NullWithoutAServer)
{
    EXPECT_EQ(XkbKeyLayout::open(":65000"), nullptr);
    EXPECT_EQ(XkbKeyLayout::open("not a display"), nullptr);
    XkbKeyLayout unconnected(nullptr);
    EXPECT_FALSE(unconnected.isValid());
    EXPECT_EQ(unconnected.character(12), std::nullopt);
}

} // namespace
