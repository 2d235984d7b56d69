// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11KeyGrabber.h"

#include "HotKeyConfig.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <xcb/xcb.h>
// xcb/xkb.h has a struct member named "explicit".
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#pragma clang diagnostic pop

#include <cstdlib>
#include <memory>
#include <utility>

namespace {

constexpr quint32 controlCommand = HotKeyConfig::Control | HotKeyConfig::Command;
constexpr quint32 positionV = 9;
// The same key and modifiers as Xvfb numbers them.
constexpr quint8 xKeyV = 55;
constexpr quint8 xKeyNumLock = 77;
constexpr quint16 controlSuper = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_4;
constexpr quint16 numLock = XCB_MOD_MASK_2;
constexpr quint16 capsLock = XCB_MOD_MASK_LOCK;

bool run(const char *program, const QStringList &arguments)
{
    QProcess process;
    process.start(QString::fromLatin1(program), arguments);
    // Qt's loop keeps running: grabbed presses reach the grabber through it.
    return QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 10000)
        && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool useLayout(const char *variant = "")
{
    return run("setxkbmap", { QStringLiteral("us"), QString::fromLatin1(variant), QStringLiteral("-option"), {} });
}

// Another program on the display.
class OtherClient {
public:
    OtherClient()
        : m_connection(xcb_connect(nullptr, nullptr))
        , m_root(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root)
    {
        std::free(xcb_xkb_use_extension_reply(m_connection, xcb_xkb_use_extension(m_connection, 1, 0), nullptr));
    }
    ~OtherClient() { xcb_disconnect(m_connection); }

    bool grab(quint16 modifiers)
    {
        return succeeds(xcb_grab_key_checked(
            m_connection, false, m_root, modifiers, xKeyV, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    int presses()
    {
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
        while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
            m_presses += (event->response_type & ~0x80) == XCB_KEY_PRESS;
            std::free(event);
        }
        return m_presses;
    }
    // Exactly these of Lock, Mod2 and Mod3 locked, as by lock keys.
    bool lock(quint16 modifiers)
    {
        return succeeds(xcb_xkb_latch_lock_state_checked(m_connection, XCB_XKB_ID_USE_CORE_KBD,
            capsLock | XCB_MOD_MASK_2 | XCB_MOD_MASK_3, modifiers, false, 0, 0, false, 0));
    }
    // Moves Num_Lock from Mod2 to Mod3, which Xvfb leaves empty.
    bool moveNumLockToMod3()
    {
        const std::unique_ptr<xcb_get_modifier_mapping_reply_t, decltype(&std::free)> mapping(
            xcb_get_modifier_mapping_reply(m_connection, xcb_get_modifier_mapping(m_connection), nullptr), &std::free);
        if (!mapping)
            return false;
        const int width = mapping->keycodes_per_modifier;
        xcb_keycode_t *keyCodes = xcb_get_modifier_mapping_keycodes(mapping.get());
        if (keyCodes[XCB_MAP_INDEX_2 * width] != xKeyNumLock || keyCodes[XCB_MAP_INDEX_3 * width] != 0)
            return false;
        std::swap(keyCodes[XCB_MAP_INDEX_2 * width], keyCodes[XCB_MAP_INDEX_3 * width]);
        xcb_set_modifier_mapping_reply_t *set = xcb_set_modifier_mapping_reply(
            m_connection, xcb_set_modifier_mapping(m_connection, width, keyCodes), nullptr);
        const bool moved = set && set->status == XCB_MAPPING_STATUS_SUCCESS;
        std::free(set);
        return moved;
    }
    bool repeatKeys()
    {
        const quint32 mode = XCB_AUTO_REPEAT_MODE_ON;
        return succeeds(xcb_change_keyboard_control_checked(m_connection, XCB_KB_AUTO_REPEAT_MODE, &mode));
    }

private:
    bool succeeds(xcb_void_cookie_t cookie)
    {
        xcb_generic_error_t *error = xcb_request_check(m_connection, cookie);
        std::free(error);
        return !error;
    }

    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    int m_presses = 0;
};

class X11KeyGrabberTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(useLayout());
        ASSERT_TRUE(other.lock(0));
        ASSERT_TRUE(marker.grab(0x6F, controlCommand)); // F12
    }

    void xdotool(const char *command, const char *keys)
    {
        ASSERT_TRUE(run("xdotool", { QString::fromLatin1(command), QString::fromLatin1(keys) }));
    }
    // Presses keys, then the marker shortcut, and waits for the marker: the
    // events before it have been handled then, and what they queued has run.
    void press(const char *keys)
    {
        xdotool("key", keys);
        settle();
    }
    void settle()
    {
        const qsizetype before = markerPresses.count();
        xdotool("key", "ctrl+super+F12");
        ASSERT_TRUE(QTest::qWaitFor([&] { return markerPresses.count() > before; }, 5000));
        QCoreApplication::processEvents();
    }

    OtherClient other;
    X11KeyGrabber grabber;
    QSignalSpy presses { &grabber, &KeyGrabber::pressed };
    X11KeyGrabber marker;
    QSignalSpy markerPresses { &marker, &KeyGrabber::pressed };
};

TEST_F(X11KeyGrabberTest, OnePressWhateverTheLocksAndOnlyWithTheseModifiers)
{
    // Given back when the next one is taken, and pressed below.
    ASSERT_TRUE(grabber.grab(positionV, HotKeyConfig::Control));
    ASSERT_TRUE(grabber.grab(positionV, controlCommand));
    for (const quint16 locks : { 0, numLock | 0, capsLock | 0, numLock | capsLock }) {
        ASSERT_TRUE(other.lock(locks));
        press("ctrl+super+v");
        EXPECT_EQ(presses.count(), 1) << "locks " << locks;
        presses.clear();
    }
    ASSERT_TRUE(other.lock(0));
    press("ctrl+v");
    press("ctrl+shift+super+v");
    grabber.ungrab();
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 0);
}

TEST_F(X11KeyGrabberTest, HeldKeyReportsOnePress)
{
    ASSERT_TRUE(other.repeatKeys());
    ASSERT_TRUE(grabber.grab(positionV, controlCommand));
    xdotool("keydown", "ctrl+super+v");
    QTest::qWait(1000); // past the repeat delay, 660 ms by default
    xdotool("keyup", "ctrl+super+v");
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 2);
}

TEST_F(X11KeyGrabberTest, CombinationHeldElsewhereIsRefusedWhole)
{
    // Only the CapsLock variant is taken: the others, grabbed before the
    // refusal was known, must be given back.
    ASSERT_TRUE(other.grab(controlSuper | capsLock));
    EXPECT_FALSE(grabber.grab(positionV, controlCommand));
    for (const quint16 locks : { 0, numLock | 0, numLock | capsLock })
        EXPECT_TRUE(other.grab(controlSuper | locks)) << "locks " << locks;
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 0);
    EXPECT_EQ(other.presses(), 1);
}

TEST_F(X11KeyGrabberTest, FollowsThePhysicalKeyAcrossKeymapChanges)
{
    ASSERT_TRUE(grabber.grab(positionV, controlCommand));
    // Dvorak types k on the key where QWERTY has v, and v elsewhere.
    ASSERT_TRUE(useLayout("dvorak"));
    press("ctrl+super+k");
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 1);

    // NumLock on another bit: the lock variants are grabbed anew.
    ASSERT_TRUE(other.moveNumLockToMod3());
    settle();
    ASSERT_TRUE(other.lock(XCB_MOD_MASK_3));
    press("ctrl+super+k");
    EXPECT_EQ(presses.count(), 2);
}

TEST_F(X11KeyGrabberTest, RefusedRegrabLeavesNothingGrabbed)
{
    ASSERT_TRUE(grabber.grab(positionV, controlCommand));
    ASSERT_TRUE(other.grab(controlSuper | XCB_MOD_MASK_3));
    ASSERT_TRUE(other.moveNumLockToMod3());
    settle();
    // Neither the old variants nor the new ones are held any more.
    for (const quint16 locks : { 0, numLock | 0, capsLock | 0 })
        EXPECT_TRUE(other.grab(controlSuper | locks)) << "locks " << locks;
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 0);
    EXPECT_EQ(other.presses(), 1);
}

} // namespace
