// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

// Reserves one key combination for the whole desktop.
class KeyGrabber : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Takes the combination, given as a key position and a modifier mask in
    // the stored shortcut's form (see HotKeyConfig). False when the desktop
    // refuses it, for example because another program holds it; nothing is
    // then grabbed.
    virtual bool grab(quint32 keyCode, quint32 modifiers) = 0;
    // Gives back the combination grabbed last, if any.
    virtual void ungrab() = 0;

Q_SIGNALS:
    // The grabbed combination was pressed, on the main thread. A key held
    // down reports one press.
    void pressed();
    // The combination could not be grabbed again after a keymap change:
    // nothing is grabbed any more.
    void grabLost();
};
