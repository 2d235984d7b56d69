// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11KeyGrabber.h"

#include "HotKeyConfig.h"
#include "OtherClient.h"
#include "TestPrograms.h"
#include "XcbReply.h"

#include <QAbstractNativeEventFilter>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <xcb/xcb.h>

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

// Moves Num_Lock from Mod2 to Mod3, which Xvfb leaves empty.
bool moveNumLockToMod3(xcb_connection_t *connection)
{
    const XcbReply<xcb_get_modifier_mapping_reply_t> mapping(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
    if (!mapping)
        return false;
    const int width = mapping->keycodes_per_modifier;
    xcb_keycode_t *keyCodes = xcb_get_modifier_mapping_keycodes(mapping.get());
    if (keyCodes[XCB_MAP_INDEX_2 * width] != xKeyNumLock || keyCodes[XCB_MAP_INDEX_3 * width] != 0)
        return false;
    std::swap(keyCodes[XCB_MAP_INDEX_2 * width], keyCodes[XCB_MAP_INDEX_3 * width]);
    const XcbReply<xcb_set_modifier_mapping_reply_t> set(
        xcb_set_modifier_mapping_reply(connection, xcb_set_modifier_mapping(connection, width, keyCodes), nullptr));
    return set && set->status == XCB_MAPPING_STATUS_SUCCESS;
}

// Counts the presses of a key that reach Qt, auto-repeats included.
class PressCounter : public QAbstractNativeEventFilter {
public:
    explicit PressCounter(quint8 xKey)
        : m_xKey(xKey)
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
    ~PressCounter() override { QCoreApplication::instance()->removeNativeEventFilter(this); }

    bool nativeEventFilter(const QByteArray &, void *message, qintptr *) override
    {
        const auto *event = static_cast<const xcb_key_press_event_t *>(message);
        if ((event->response_type & 0x7f) == XCB_KEY_PRESS && event->detail == m_xKey)
            ++presses;
        return false;
    }

    int presses = 0;

private:
    quint8 m_xKey;
};

bool repeatKeys(OtherClient &client)
{
    const quint32 mode = XCB_AUTO_REPEAT_MODE_ON;
    return client.succeeds(xcb_change_keyboard_control_checked(client.connection(), XCB_KB_AUTO_REPEAT_MODE, &mode));
}

class X11KeyGrabberTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(useLayouts(QStringLiteral("us")));
        ASSERT_TRUE(lock(0));
        ASSERT_TRUE(marker.grab(0x6F, controlCommand)); // F12
    }

    // Qt's loop keeps running: grabbed presses reach the grabber through it.
    void xdotool(const char *command, const char *keys)
    {
        ASSERT_TRUE(runProgram(QStringLiteral("xdotool"), { QString::fromLatin1(command), QString::fromLatin1(keys) }));
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
        ASSERT_TRUE(eventually([&] { return markerPresses.count() > before; }));
        QCoreApplication::processEvents();
    }

    // Exactly these of Lock, Mod2 and Mod3 locked, as by lock keys.
    bool lock(quint16 modifiers) { return other.lockModifiers(capsLock | XCB_MOD_MASK_2 | XCB_MOD_MASK_3, modifiers); }

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
        ASSERT_TRUE(lock(locks));
        press("ctrl+super+v");
        EXPECT_EQ(presses.count(), 1) << "locks " << locks;
        presses.clear();
    }
    ASSERT_TRUE(lock(0));
    press("ctrl+v");
    press("ctrl+shift+super+v");
    grabber.ungrab();
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 0);
}

TEST_F(X11KeyGrabberTest, HeldKeyReportsOnePress)
{
    ASSERT_TRUE(repeatKeys(other));
    ASSERT_TRUE(grabber.grab(positionV, controlCommand));
    PressCounter received(xKeyV);
    xdotool("keydown", "ctrl+super+v");
    // Held until the server has repeated the press twice.
    ASSERT_TRUE(eventually([&] { return received.presses >= 3; }));
    xdotool("keyup", "ctrl+super+v");
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 2);
}

TEST_F(X11KeyGrabberTest, CombinationHeldElsewhereIsRefusedWhole)
{
    // Only the CapsLock variant is taken: the others, grabbed before the
    // refusal was known, must be given back.
    ASSERT_TRUE(other.grabKey(xKeyV, controlSuper | capsLock));
    EXPECT_FALSE(grabber.grab(positionV, controlCommand));
    for (const quint16 locks : { 0, numLock | 0, numLock | capsLock })
        EXPECT_TRUE(other.grabKey(xKeyV, controlSuper | locks)) << "locks " << locks;
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 0);
    EXPECT_EQ(other.takeEvents().count(XCB_KEY_PRESS), 1);
}

TEST_F(X11KeyGrabberTest, FollowsThePhysicalKeyAcrossKeymapChanges)
{
    ASSERT_TRUE(grabber.grab(positionV, controlCommand));
    // Dvorak types k on the key where QWERTY has v, and v elsewhere.
    ASSERT_TRUE(useLayouts(QStringLiteral("us"), QStringLiteral("dvorak")));
    press("ctrl+super+k");
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 1);

    // NumLock on another bit: the lock variants are grabbed anew.
    ASSERT_TRUE(moveNumLockToMod3(other.connection()));
    settle();
    ASSERT_TRUE(lock(XCB_MOD_MASK_3));
    press("ctrl+super+k");
    EXPECT_EQ(presses.count(), 2);
}

TEST_F(X11KeyGrabberTest, RefusedRegrabLeavesNothingGrabbed)
{
    ASSERT_TRUE(grabber.grab(positionV, controlCommand));
    const QSignalSpy lost(&grabber, &KeyGrabber::grabLost);
    ASSERT_TRUE(other.grabKey(xKeyV, controlSuper | XCB_MOD_MASK_3));
    ASSERT_TRUE(moveNumLockToMod3(other.connection()));
    settle();
    EXPECT_EQ(lost.count(), 1);
    // Neither the old variants nor the new ones are held any more.
    for (const quint16 locks : { 0, numLock | 0, capsLock | 0 })
        EXPECT_TRUE(other.grabKey(xKeyV, controlSuper | locks)) << "locks " << locks;
    press("ctrl+super+v");
    EXPECT_EQ(presses.count(), 0);
    EXPECT_EQ(other.takeEvents().count(XCB_KEY_PRESS), 1);
}

} // namespace
