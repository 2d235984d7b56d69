// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyGrabber.h"

#include <QAbstractNativeEventFilter>
#include <QList>

#include <optional>

struct xcb_connection_t;

// A key combination grabbed on the root window with XGrabKey, in its four
// lock variants (none, NumLock, CapsLock, both) so that the lock keys do not
// matter. The key is grabbed by position: the stored key code names a
// physical key, whatever the layout. A keymap or modifier-map change grabs
// anew; should that fail, nothing stays grabbed. Presses come through Qt's
// native event filter; an auto-repeating key reports one press.
class X11KeyGrabber : public KeyGrabber, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    // Uses Qt's connection: needs a QGuiApplication on the xcb platform.
    // Without one, every grab is refused.
    explicit X11KeyGrabber(QObject *parent = nullptr);
    ~X11KeyGrabber() override;

    // Gives back a combination held before.
    bool grab(quint32 keyCode, quint32 modifiers) override;
    void ungrab() override;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    // The combination in its stored form, kept to grab it anew when the
    // keymap changes.
    struct Grab {
        quint32 keyCode = 0;
        quint32 modifiers = 0;
    };
    // One passive grab held on the server.
    struct Variant {
        quint32 root = 0;
        quint8 keyCode = 0;
        quint16 modifiers = 0;
        friend bool operator==(const Variant &, const Variant &) = default;
    };

    // Grabs m_grab with the current modifier map: all variants or none.
    bool takeGrab();
    void release(const QList<Variant> &variants);
    void scheduleRegrab();
    void regrab();
    bool isGrabbedOn(quint32 window) const;

    xcb_connection_t *m_connection = nullptr;
    // The XKB extension's first event number, 0 without XKB.
    quint8 m_xkbFirstEvent = 0;
    std::optional<Grab> m_grab;
    QList<Variant> m_variants;
    // The grabbed key and modifiers in X terms, and the lock bits a press may
    // carry on top of them.
    quint8 m_keyCode = 0;
    quint16 m_modifiers = 0;
    quint16 m_lockModifiers = 0;
    // Auto-repeat sends a release and a press with the same time.
    std::optional<quint32> m_lastReleaseTime;
    bool m_regrabPending = false;
};
