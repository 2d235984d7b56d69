// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11PasteKeystroke.h"
#include "OtherClient.h"
#include "TestPrograms.h"
#include "XcbReply.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace {

using Key = std::pair<uint8_t, xcb_keycode_t>;

// Xvfb's evdev key codes.
constexpr xcb_keycode_t controlKey = 37;
constexpr xcb_keycode_t shiftKey = 50;
constexpr xcb_keycode_t altKey = 64;
constexpr xcb_keycode_t superKey = 133;
constexpr xcb_keycode_t qwertyV = 55;
// Where Dvorak has its v: the key of the QWERTY full stop.
constexpr xcb_keycode_t dvorakV = 60;

Key press(xcb_keycode_t key)
{
    return { XCB_KEY_PRESS, key };
}

Key release(xcb_keycode_t key)
{
    return { XCB_KEY_RELEASE, key };
}

QList<Key> typed(QList<xcb_keycode_t> modifiers, xcb_keycode_t v)
{
    QList<Key> keys;
    for (const xcb_keycode_t modifier : modifiers)
        keys.append(press(modifier));
    keys += { press(v), release(v) };
    for (auto modifier = modifiers.crbegin(); modifier != modifiers.crend(); ++modifier)
        keys.append(release(*modifier));
    return keys;
}

// A focused window of another client that records the keys it receives.
class KeyRecorder {
public:
    KeyRecorder()
    {
        m_window = m_client.createWindow("recorder", "Recorder");
        const uint32_t mask = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;
        xcb_change_window_attributes(m_client.connection(), m_window, XCB_CW_EVENT_MASK, &mask);
        m_client.setInputFocus(m_window);
    }

    OtherClient &client() { return m_client; }

    // Waits until count keys have arrived, and gives them: fewer when they
    // do not come, which the comparison then shows.
    QList<Key> take(qsizetype count)
    {
        std::ignore = eventually([&] {
            read();
            return m_keys.size() >= count;
        });
        return std::exchange(m_keys, {});
    }

private:
    void read()
    {
        while (const XcbReply<xcb_generic_event_t> event { xcb_poll_for_event(m_client.connection()) }) {
            const uint8_t type = event->response_type & 0x7f;
            if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE)
                m_keys.append({ type, reinterpret_cast<const xcb_key_press_event_t *>(event.get())->detail });
        }
    }

    OtherClient m_client;
    xcb_window_t m_window = 0;
    QList<Key> m_keys;
};

} // namespace

TEST(X11PasteKeystroke, TypesThePasteKeysOfTheTargetOnTheLayoutsVKey)
{
    X11PasteKeystroke keystroke;
    ASSERT_TRUE(keystroke.isTrusted());
    KeyRecorder recorder;
    const struct {
        const char *name;
        const char *layouts;
        const char *variants;
        // Locked with the layouts, as a layout switcher would.
        uint8_t group;
        const char *identifier;
        QList<Key> keys;
    } rows[] = {
        { "an editor", "us", "", 0, "org.gnome.TextEditor", typed({ controlKey }, qwertyV) },
        { "a terminal", "us", "", 0, "Lxterminal", typed({ controlKey, shiftKey }, qwertyV) },
        { "urxvt", "us", "", 0, "URxvt", typed({ controlKey, altKey }, qwertyV) },
        { "Dvorak", "us", "dvorak", 0, "Mousepad", typed({ controlKey }, dvorakV) },
        // Russian in force has no v: the Latin group's key.
        { "Russian beside Dvorak", "ru,us", ",dvorak", 0, "Mousepad", typed({ controlKey }, dvorakV) },
        { "Dvorak beside Russian", "us,ru", "dvorak,", 1, "Mousepad", typed({ controlKey }, dvorakV) },
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(useLayouts(QString::fromLatin1(row.layouts), QString::fromLatin1(row.variants)));
        ASSERT_TRUE(recorder.client().lockModifiers(0, 0, row.group));
        keystroke.sendPaste({ 1, QString::fromLatin1(row.identifier) });
        EXPECT_EQ(recorder.take(row.keys.size()), row.keys);
    }

    // xterm has no clipboard-paste key: nothing is sent, which the next
    // paste's keys, alone, show.
    ASSERT_TRUE(useLayouts(QStringLiteral("us")));
    keystroke.sendPaste({ 1, QStringLiteral("XTerm") });
    keystroke.sendPaste({ 1, QStringLiteral("Mousepad") });
    EXPECT_EQ(recorder.take(4), typed({ controlKey }, qwertyV));
}

// Ctrl+V with the user's Super still down would be Ctrl+Super+V.
TEST(X11PasteKeystroke, WaitsForTheUsersModifiersToBeUp)
{
    ASSERT_TRUE(useLayouts(QStringLiteral("us")));
    X11PasteKeystroke keystroke;
    KeyRecorder recorder;
    ASSERT_TRUE(runProgram(QStringLiteral("xdotool"), { QStringLiteral("keydown"), QStringLiteral("super") }));
    ASSERT_EQ(recorder.take(1), QList<Key> { press(superKey) });
    keystroke.sendPaste({ 1, QStringLiteral("Mousepad") });
    // Let go while the keystroke waits, with the event loop running.
    QProcess letGo;
    letGo.start(QStringLiteral("xdotool"), { QStringLiteral("keyup"), QStringLiteral("super") });
    QList<Key> expected { release(superKey) };
    expected += typed({ controlKey }, qwertyV);
    EXPECT_EQ(recorder.take(expected.size()), expected);
    letGo.waitForFinished();
}
