// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11KeyGrabber.h"

#include "X11Logging.h"
#include "XcbReply.h"

#include "HotKeyConfig.h"
#include "KeyPositions.h"
#include "X11KeyCodes.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include "XcbXkb.h"
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

namespace {

const QLoggingCategory &lcKeyGrabber()
{
    return lcX11();
}

constexpr xcb_keysym_t numLockKeysym = 0xff7f;
constexpr quint16 modifierBits = 0xff;

// Bits beyond the four modifiers have no counterpart here and are left out.
quint16 xModifiers(quint32 stored)
{
    quint16 modifiers = 0;
    if (stored & HotKeyConfig::Command)
        modifiers |= XCB_MOD_MASK_4;
    if (stored & HotKeyConfig::Option)
        modifiers |= XCB_MOD_MASK_1;
    if (stored & HotKeyConfig::Control)
        modifiers |= XCB_MOD_MASK_CONTROL;
    if (stored & HotKeyConfig::Shift)
        modifiers |= XCB_MOD_MASK_SHIFT;
    return modifiers;
}

// The modifier bit the Num_Lock key sets, 0 when it sets none. Mod2 on most
// servers, but nothing guarantees it.
quint16 numLockModifier(xcb_connection_t *connection)
{
    const xcb_setup_t *setup = xcb_get_setup(connection);
    const xcb_get_modifier_mapping_cookie_t modifiersCookie = xcb_get_modifier_mapping(connection);
    const xcb_get_keyboard_mapping_cookie_t keysCookie
        = xcb_get_keyboard_mapping(connection, setup->min_keycode, setup->max_keycode - setup->min_keycode + 1);
    const XcbReply<xcb_get_modifier_mapping_reply_t> modifiers(
        xcb_get_modifier_mapping_reply(connection, modifiersCookie, nullptr));
    const XcbReply<xcb_get_keyboard_mapping_reply_t> keys(
        xcb_get_keyboard_mapping_reply(connection, keysCookie, nullptr));
    if (!modifiers || !keys)
        return 0;

    const xcb_keycode_t *keyCodes = xcb_get_modifier_mapping_keycodes(modifiers.get());
    const int perModifier = modifiers->keycodes_per_modifier;
    const xcb_keysym_t *symbols = xcb_get_keyboard_mapping_keysyms(keys.get());
    const int symbolCount = xcb_get_keyboard_mapping_keysyms_length(keys.get());
    const int perKey = keys->keysyms_per_keycode;
    for (int modifier = 0; modifier < 8; ++modifier) {
        for (int i = 0; i < perModifier; ++i) {
            const xcb_keycode_t keyCode = keyCodes[modifier * perModifier + i];
            if (keyCode < setup->min_keycode) // an empty slot
                continue;
            const int first = (keyCode - setup->min_keycode) * perKey;
            for (int level = 0; level < perKey && first + level < symbolCount; ++level) {
                if (symbols[first + level] == numLockKeysym)
                    return quint16(1 << modifier);
            }
        }
    }
    return 0;
}

} // namespace

X11KeyGrabber::X11KeyGrabber(QObject *parent)
    : KeyGrabber(parent)
{
    auto *app = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    if (auto *x11 = app ? app->nativeInterface<QNativeInterface::QX11Application>() : nullptr)
        m_connection = x11->connection();
    if (!m_connection) {
        qCWarning(lcKeyGrabber) << "No X11 connection: the shortcut cannot work";
        return;
    }
    // Already queried by Qt, so no round trip.
    const xcb_query_extension_reply_t *xkb = xcb_get_extension_data(m_connection, &xcb_xkb_id);
    if (xkb && xkb->present)
        m_xkbFirstEvent = xkb->first_event;
    app->installNativeEventFilter(this);
}

X11KeyGrabber::~X11KeyGrabber()
{
    if (QCoreApplication *app = QCoreApplication::instance())
        app->removeNativeEventFilter(this);
    ungrab();
}

bool X11KeyGrabber::grab(quint32 keyCode, quint32 modifiers)
{
    ungrab();
    if (!m_connection || !KeyPositions::evdevCode(keyCode))
        return false;
    m_grab = Grab { keyCode, modifiers };
    if (!takeGrab()) {
        m_grab.reset();
        return false;
    }
    return true;
}

void X11KeyGrabber::ungrab()
{
    m_grab.reset();
    release(std::exchange(m_variants, {}));
}

bool X11KeyGrabber::takeGrab()
{
    const xcb_setup_t *setup = xcb_get_setup(m_connection);
    const quint32 keyCode = *KeyPositions::evdevCode(m_grab->keyCode) + X11KeyCodes::evdevOffset;
    if (keyCode < setup->min_keycode || keyCode > setup->max_keycode) {
        release(std::exchange(m_variants, {}));
        return false;
    }
    const quint16 modifiers = xModifiers(m_grab->modifiers);
    quint16 numLock = numLockModifier(m_connection);
    // A lock on a modifier of the combination itself cannot be told apart.
    if (numLock & modifiers)
        numLock = 0;

    const quint16 lockSets[] = { 0, numLock, XCB_MOD_MASK_LOCK, quint16(numLock | XCB_MOD_MASK_LOCK) };
    QList<Variant> variants;
    for (auto roots = xcb_setup_roots_iterator(setup); roots.rem; xcb_screen_next(&roots)) {
        for (const quint16 locks : lockSets) {
            const Variant variant { roots.data->root, quint8(keyCode), quint16(modifiers | locks) };
            if (!variants.contains(variant))
                variants.append(variant);
        }
    }
    // Checked requests: BadAccess, another client holding one of them, comes
    // back here rather than as an error event Qt would only log.
    QList<xcb_void_cookie_t> cookies;
    for (const Variant &variant : std::as_const(variants)) {
        cookies.append(xcb_grab_key_checked(m_connection, false, variant.root, variant.modifiers, variant.keyCode,
            XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    bool taken = true;
    for (const xcb_void_cookie_t cookie : std::as_const(cookies)) {
        if (const XcbReply<xcb_generic_error_t> error(xcb_request_check(m_connection, cookie)); error) {
            qCDebug(lcKeyGrabber) << "Key grab refused, X error" << error->error_code;
            taken = false;
        }
    }
    // A lost connection reports no errors at all.
    if (!taken || xcb_connection_has_error(m_connection)) {
        release(variants);
        release(std::exchange(m_variants, {}));
        return false;
    }

    // The new grabs are in place before the old ones go, so that another
    // client cannot take the combination in between.
    QList<Variant> obsolete = std::exchange(m_variants, variants);
    obsolete.removeIf([&](const Variant &variant) { return m_variants.contains(variant); });
    release(obsolete);
    m_keyCode = quint8(keyCode);
    m_modifiers = modifiers;
    m_lockModifiers = numLock | XCB_MOD_MASK_LOCK;
    return true;
}

void X11KeyGrabber::release(const QList<Variant> &variants)
{
    // Without the application, its connection is gone too.
    if (variants.isEmpty() || !QCoreApplication::instance())
        return;
    for (const Variant &variant : variants)
        xcb_ungrab_key(m_connection, variant.keyCode, variant.root, variant.modifiers);
    xcb_flush(m_connection);
}

bool X11KeyGrabber::isGrabbedOn(quint32 window) const
{
    return std::any_of(
        m_variants.cbegin(), m_variants.cend(), [window](const Variant &variant) { return variant.root == window; });
}

void X11KeyGrabber::scheduleRegrab()
{
    if (!m_grab || m_regrabPending)
        return;
    // A layout change comes as a burst of events: grab once, after them.
    m_regrabPending = true;
    QMetaObject::invokeMethod(this, &X11KeyGrabber::regrab, Qt::QueuedConnection);
}

void X11KeyGrabber::regrab()
{
    m_regrabPending = false;
    if (m_grab && !takeGrab()) {
        qCDebug(lcKeyGrabber) << "The shortcut could not be grabbed again after a keymap change";
        m_grab.reset();
        Q_EMIT grabLost();
    }
}

bool X11KeyGrabber::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    const quint8 type = event->response_type & ~0x80;

    if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE) {
        const auto *key = reinterpret_cast<const xcb_key_press_event_t *>(event);
        if (!m_grab || key->detail != m_keyCode || !isGrabbedOn(key->event))
            return false;
        if (type == XCB_KEY_RELEASE) {
            m_lastReleaseTime = key->time;
            return false;
        }
        const bool repeated = m_lastReleaseTime == key->time;
        if (!repeated && (key->state & modifierBits & ~m_lockModifiers) == m_modifiers)
            Q_EMIT pressed();
    } else if (type == XCB_MAPPING_NOTIFY) {
        if (reinterpret_cast<const xcb_mapping_notify_event_t *>(event)->request != XCB_MAPPING_POINTER)
            scheduleRegrab();
    } else if (m_xkbFirstEvent && type == m_xkbFirstEvent) {
        // All XKB events share one number; the kind is in the second byte.
        const quint8 xkbType = reinterpret_cast<const xcb_xkb_new_keyboard_notify_event_t *>(event)->xkbType;
        if (xkbType == XCB_XKB_NEW_KEYBOARD_NOTIFY || xkbType == XCB_XKB_MAP_NOTIFY)
            scheduleRegrab();
    }
    // Qt still needs the event, if only for its timestamp.
    return false;
}
