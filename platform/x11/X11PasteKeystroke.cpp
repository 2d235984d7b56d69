// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11PasteKeystroke.h"

#include "X11Display.h"
#include "X11KeyCodes.h"
#include "XcbReply.h"
#include "XkbKeyLayout.h"

#include <QList>
#include <QTimer>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace {

constexpr int modifierWaitMilliseconds = 1000;
constexpr int pollMilliseconds = 5;
// Where the v key sits on a QWERTY keyboard, for a keymap without a v.
constexpr quint32 evdevKeyV = 47;

// Rows of the core modifier mapping.
constexpr int shiftRow = 0;
constexpr int controlRow = 2;
constexpr int mod1Row = 3;
constexpr int modifierRows = 8;

// The keys of each modifier row, as the server maps them now.
QList<QList<xcb_keycode_t>> modifierKeys(xcb_connection_t *connection)
{
    const XcbReply<xcb_get_modifier_mapping_reply_t> mapping(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
    QList<QList<xcb_keycode_t>> rows(modifierRows);
    if (!mapping)
        return rows;
    const xcb_keycode_t *keys = xcb_get_modifier_mapping_keycodes(mapping.get());
    const int perRow = mapping->keycodes_per_modifier;
    for (int row = 0; row < modifierRows; ++row) {
        for (int i = 0; i < perRow; ++i) {
            if (const xcb_keycode_t key = keys[row * perRow + i])
                rows[row].append(key);
        }
    }
    return rows;
}

} // namespace

X11PasteKeystroke::X11PasteKeystroke(QObject *parent)
    : X11PasteKeystroke(X11Display::qtConnection(), parent)
{
}

X11PasteKeystroke::X11PasteKeystroke(xcb_connection_t *connection, QObject *parent)
    : QObject(parent)
    , m_connection(connection && !xcb_connection_has_error(connection) ? connection : nullptr)
    , m_poll(new QTimer(this))
{
    if (m_connection)
        m_layout = std::make_unique<XkbKeyLayout>(m_connection);
    m_poll->setInterval(pollMilliseconds);
    connect(m_poll, &QTimer::timeout, this, &X11PasteKeystroke::sendWhenModifiersUp);
}

X11PasteKeystroke::~X11PasteKeystroke() = default;

bool X11PasteKeystroke::isTrusted() const
{
    if (!m_connection)
        return false;
    const xcb_query_extension_reply_t *xtest = xcb_get_extension_data(m_connection, &xcb_test_id);
    return xtest && xtest->present;
}

void X11PasteKeystroke::sendPaste(const RunningApp &target)
{
    const PasteShortcut shortcut = PasteShortcuts::forApplication(target.identifier);
    if (shortcut == PasteShortcut::None || !isTrusted())
        return;
    m_pending = shortcut;
    m_deadline.setRemainingTime(modifierWaitMilliseconds);
    // Asked at once: the user has most often let go already.
    sendWhenModifiersUp();
}

void X11PasteKeystroke::sendWhenModifiersUp()
{
    if (!m_pending)
        return;
    if (userHoldsModifier() && !m_deadline.hasExpired()) {
        m_poll->start();
        return;
    }
    m_poll->stop();
    const PasteShortcut shortcut = *m_pending;
    m_pending.reset();
    // Still held at the deadline: our keys would make another shortcut with
    // the user's. The entry stays on the clipboard for a paste by hand.
    if (userHoldsModifier())
        return;
    send(shortcut);
}

bool X11PasteKeystroke::userHoldsModifier() const
{
    const XcbReply<xcb_query_keymap_reply_t> keymap(
        xcb_query_keymap_reply(m_connection, xcb_query_keymap(m_connection), nullptr));
    if (!keymap)
        return false;
    for (const QList<xcb_keycode_t> &row : modifierKeys(m_connection)) {
        for (const xcb_keycode_t key : row) {
            if (keymap->keys[key / 8] & (1 << (key % 8)))
                return true;
        }
    }
    return false;
}

void X11PasteKeystroke::send(PasteShortcut shortcut)
{
    const QList<QList<xcb_keycode_t>> modifiers = modifierKeys(m_connection);
    // Without a Control key, a bare "v" would be typed into the window.
    if (modifiers.at(controlRow).isEmpty())
        return;
    QList<xcb_keycode_t> held;
    const auto hold = [&](int row) {
        if (!modifiers.at(row).isEmpty())
            held.append(modifiers.at(row).first());
    };
    hold(controlRow);
    if (shortcut == PasteShortcut::ControlShiftV)
        hold(shiftRow);
    if (shortcut == PasteShortcut::ControlAltV)
        hold(mod1Row);
    const xcb_keycode_t v
        = m_layout->xKeyCodeTyping(U'v').value_or(xcb_keycode_t(evdevKeyV + X11KeyCodes::evdevOffset));

    const auto fake = [&](uint8_t type, xcb_keycode_t key) {
        xcb_test_fake_input(m_connection, type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
    };
    for (const xcb_keycode_t key : std::as_const(held))
        fake(XCB_KEY_PRESS, key);
    fake(XCB_KEY_PRESS, v);
    fake(XCB_KEY_RELEASE, v);
    for (auto key = held.crbegin(); key != held.crend(); ++key)
        fake(XCB_KEY_RELEASE, *key);
    xcb_flush(m_connection);
}
