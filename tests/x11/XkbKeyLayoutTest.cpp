// SPDX-License-Identifier: GPL-3.0-or-later
#include "XkbKeyLayout.h"
#include "HotKeyConfig.h"
#include "HotKeyTranslator.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <xcb/xcb.h>
// xcb/xkb.h has a struct member named "explicit".
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#if defined(__clang__)
#pragma clang diagnostic pop
#endif
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>
#include <thread>
#include <utility>

void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace {

using namespace std::chrono_literals;
using HotKeyTranslator::displayString;
using HotKeyTranslator::keyName;
using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

constexpr quint32 controlCommand = HotKeyConfig::Control | HotKeyConfig::Command;

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

std::optional<QString> character(char latin1)
{
    return QString(QChar::fromLatin1(latin1));
}

// Runs an X tool against the test server.
AssertionResult run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool finished = process.waitForFinished(10000);
    const QString command = program + u' ' + arguments.join(u' ');
    if (!finished) {
        process.kill();
        process.waitForFinished();
        return AssertionFailure() << command.toStdString() << ": " << process.errorString().toStdString();
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        return AssertionFailure() << command.toStdString() << " exited with " << process.exitCode() << ": "
                                  << process.readAll().toStdString();
    }
    return AssertionSuccess();
}

// Replaces the server's keymap, dropping the options of earlier tests.
AssertionResult useLayouts(const QString &layouts, const QString &option = {})
{
    QStringList arguments { QStringLiteral("-display"), qEnvironmentVariable("DISPLAY"), QStringLiteral("-model"),
        QStringLiteral("pc105"), QStringLiteral("-layout"), layouts, QStringLiteral("-variant"), QString(),
        QStringLiteral("-option"), QString() };
    if (!option.isEmpty())
        arguments << QStringLiteral("-option") << option;
    return run(QStringLiteral("setxkbmap"), arguments);
}

AssertionResult pressKey(const QString &keysym)
{
    return run(QStringLiteral("xdotool"), { QStringLiteral("key"), keysym });
}

struct Locks {
    bool capsLock = false;
    xkb_layout_index_t group = 0;
};

// The test's own view of the server's lock state, independent of the code
// under test, so that each test can check the state it set up really holds.
class ServerKeyboard {
public:
    ServerKeyboard()
        : m_connection(xcb_connect(nullptr, nullptr))
        , m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS))
    {
        if (!xcb_connection_has_error(m_connection) && m_context
            && xkb_x11_setup_xkb_extension(m_connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr))
            m_device = xkb_x11_get_core_keyboard_device_id(m_connection);
    }
    ~ServerKeyboard()
    {
        if (m_context)
            xkb_context_unref(m_context);
        xcb_disconnect(m_connection);
    }
    ServerKeyboard(const ServerKeyboard &) = delete;
    ServerKeyboard &operator=(const ServerKeyboard &) = delete;

    bool isValid() const { return m_device >= 0; }

    std::optional<Locks> locks() const
    {
        xkb_keymap *keymap
            = xkb_x11_keymap_new_from_device(m_context, m_connection, m_device, XKB_KEYMAP_COMPILE_NO_FLAGS);
        if (!keymap)
            return std::nullopt;
        xkb_state *state = xkb_x11_state_new_from_device(keymap, m_connection, m_device);
        std::optional<Locks> result;
        if (state) {
            result = Locks { xkb_state_mod_name_is_active(state, XKB_MOD_NAME_CAPS, XKB_STATE_MODS_LOCKED) > 0,
                xkb_state_serialize_layout(state, XKB_STATE_LAYOUT_EFFECTIVE) };
            xkb_state_unref(state);
        }
        xkb_keymap_unref(keymap);
        return result;
    }

    // The server handles XTest input after the tool has returned, so wait.
    AssertionResult waitForLocks(Locks expected) const
    {
        const auto deadline = std::chrono::steady_clock::now() + 5s;
        std::optional<Locks> current;
        do {
            current = locks();
            if (current && current->capsLock == expected.capsLock && current->group == expected.group)
                return AssertionSuccess();
            std::this_thread::sleep_for(20ms);
        } while (std::chrono::steady_clock::now() < deadline);
        if (!current)
            return AssertionFailure() << "cannot read the keyboard state";
        return AssertionFailure() << "Caps Lock " << current->capsLock << ", group " << current->group
                                  << "; wanted Caps Lock " << expected.capsLock << ", group " << expected.group;
    }

    // Sets the locks directly, as a desktop's layout switcher does. (xdotool
    // cannot: it restores the group it found after every key it sends.)
    bool lock(Locks locks) const
    {
        const xcb_void_cookie_t cookie = xcb_xkb_latch_lock_state_checked(m_connection,
            static_cast<xcb_xkb_device_spec_t>(m_device), XCB_MOD_MASK_LOCK, locks.capsLock ? XCB_MOD_MASK_LOCK : 0,
            true, static_cast<uint8_t>(locks.group), 0, false, 0);
        xcb_generic_error_t *error = xcb_request_check(m_connection, cookie);
        std::free(error);
        return !error;
    }

private:
    xcb_connection_t *m_connection;
    xkb_context *m_context;
    int m_device = -1;
};

class XkbKeyLayoutTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_keyboard.isValid());
        ASSERT_TRUE(useLayouts(QStringLiteral("us")));
        ASSERT_TRUE(m_keyboard.lock({}));
        ASSERT_TRUE(m_keyboard.waitForLocks({}));
        m_layout = XkbKeyLayout::open();
        ASSERT_NE(m_layout, nullptr);
    }

    ServerKeyboard m_keyboard;
    std::unique_ptr<XkbKeyLayout> m_layout;
};

TEST_F(XkbKeyLayoutTest, FollowsLayoutChangesWithTheSameObject)
{
    const KeyLayout *keys = m_layout.get();
    EXPECT_EQ(displayString(12, controlCommand, keys), text("⌃⌘Q"));
    EXPECT_EQ(keyName(0, keys), text("A"));

    ASSERT_TRUE(useLayouts(QStringLiteral("fr")));
    EXPECT_EQ(displayString(12, controlCommand, keys), text("⌃⌘A"));
    EXPECT_EQ(keyName(0, keys), text("Q"));
    EXPECT_EQ(keyName(13, keys), text("Z"));
    EXPECT_EQ(keyName(41, keys), text("M"));
    EXPECT_EQ(keyName(46, keys), text(","));
    // Beyond ASCII, upper-cased.
    EXPECT_EQ(keyName(39, keys), text("Ù"));

    ASSERT_TRUE(useLayouts(QStringLiteral("us")));
    EXPECT_EQ(displayString(12, controlCommand, keys), text("⌃⌘Q"));
}

// Checks the position table against the keys of a real US keymap.
TEST_F(XkbKeyLayoutTest, UsKeyPositionsTypeTheirUsCharacters)
{
    const std::pair<quint32, char> expected[] = {
        { 0x00, 'a' }, { 0x0B, 'b' }, { 0x08, 'c' }, { 0x02, 'd' }, { 0x0E, 'e' }, { 0x03, 'f' }, { 0x05, 'g' },
        { 0x04, 'h' }, { 0x22, 'i' }, { 0x26, 'j' }, { 0x28, 'k' }, { 0x25, 'l' }, { 0x2E, 'm' }, { 0x2D, 'n' },
        { 0x1F, 'o' }, { 0x23, 'p' }, { 0x0C, 'q' }, { 0x0F, 'r' }, { 0x01, 's' }, { 0x11, 't' }, { 0x20, 'u' },
        { 0x09, 'v' }, { 0x0D, 'w' }, { 0x07, 'x' }, { 0x10, 'y' }, { 0x06, 'z' }, { 0x12, '1' }, { 0x13, '2' },
        { 0x14, '3' }, { 0x15, '4' }, { 0x17, '5' }, { 0x16, '6' }, { 0x1A, '7' }, { 0x1C, '8' }, { 0x19, '9' },
        { 0x1D, '0' }, { 0x1B, '-' }, { 0x18, '=' }, { 0x21, '[' }, { 0x1E, ']' }, { 0x2A, '\\' }, { 0x29, ';' },
        { 0x27, '\'' }, { 0x32, '`' }, { 0x2B, ',' }, { 0x2F, '.' }, { 0x2C, '/' },
        { 0x0A, '<' }, // the extra ISO key, present on the pc105 model
        { 0x31, ' ' }, { 0x43, '*' }, { 0x45, '+' }, { 0x4E, '-' }, { 0x4B, '/' }, // keypad operators
    };
    for (const auto &[keyCode, latin1] : expected)
        EXPECT_EQ(m_layout->character(keyCode), character(latin1)) << "virtual key code " << keyCode;
}

TEST_F(XkbKeyLayoutTest, KeysWithoutACharacterShowTheirCode)
{
    const KeyLayout *keys = m_layout.get();
    // No position at all, a key the US keymap leaves empty (the Yen key of
    // Japanese keyboards), and a key whose symbol is no character (Home).
    for (const quint32 keyCode : { 52u, 93u, 115u }) {
        EXPECT_EQ(m_layout->character(keyCode), std::nullopt) << "virtual key code " << keyCode;
        EXPECT_EQ(keyName(keyCode, keys), QStringLiteral("key(") + QString::number(keyCode) + u')');
    }

    // Function keys are named as printed on them.
    EXPECT_EQ(keyName(122, keys), text("F1"));
    EXPECT_EQ(displayString(0x6F, controlCommand, keys), text("⌃⌘F12"));

    // The key right of P: a bracket on US, a dead circumflex on French.
    EXPECT_EQ(keyName(33, keys), text("["));
    ASSERT_TRUE(useLayouts(QStringLiteral("fr")));
    EXPECT_EQ(m_layout->character(33), std::nullopt);
    EXPECT_EQ(displayString(33, controlCommand, keys), text("⌃⌘key(33)"));
}

TEST_F(XkbKeyLayoutTest, CapsLockDoesNotChangeTheCharacter)
{
    ASSERT_TRUE(pressKey(QStringLiteral("Caps_Lock")));
    ASSERT_TRUE(m_keyboard.waitForLocks({ .capsLock = true }));

    EXPECT_EQ(m_layout->character(12), character('q'));
    EXPECT_EQ(m_layout->character(0), character('a'));
    EXPECT_EQ(m_layout->character(18), character('1'));
    EXPECT_EQ(displayString(12, controlCommand, m_layout.get()), text("⌃⌘Q"));
}

TEST_F(XkbKeyLayoutTest, FollowsTheLockedGroup)
{
    ASSERT_TRUE(useLayouts(QStringLiteral("us,fr"), QStringLiteral("grp:alt_shift_toggle")));
    ASSERT_TRUE(m_keyboard.waitForLocks({ .group = 0 }));
    EXPECT_EQ(m_layout->character(12), character('q'));
    EXPECT_EQ(m_layout->character(33), character('['));

    ASSERT_TRUE(m_keyboard.lock({ .group = 1 }));
    ASSERT_TRUE(m_keyboard.waitForLocks({ .group = 1 }));
    EXPECT_EQ(displayString(12, controlCommand, m_layout.get()), text("⌃⌘A"));
    EXPECT_EQ(m_layout->character(33), std::nullopt);
    // Keypad keys are defined in the first group only.
    EXPECT_EQ(m_layout->character(0x43), character('*'));

    ASSERT_TRUE(m_keyboard.lock({ .group = 0 }));
    ASSERT_TRUE(m_keyboard.waitForLocks({ .group = 0 }));
    EXPECT_EQ(m_layout->character(12), character('q'));
}

TEST(XkbKeyLayoutOpen, NullWithoutAServer)
{
    // Nothing listens on this display; the second name is malformed.
    EXPECT_EQ(XkbKeyLayout::open(":65000"), nullptr);
    EXPECT_EQ(XkbKeyLayout::open("not a display"), nullptr);

    XkbKeyLayout unconnected(nullptr);
    EXPECT_FALSE(unconnected.isValid());
    EXPECT_EQ(unconnected.character(12), std::nullopt);

    const auto layout = XkbKeyLayout::open();
    ASSERT_NE(layout, nullptr);
    EXPECT_TRUE(layout->isValid());
}

} // namespace
