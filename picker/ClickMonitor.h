// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

// Tells of every left or right button press on the desktop, whichever window
// it lands in, while started: the picker hides on a click outside it even
// when the click moves no keyboard focus (the desktop background, a dock).
// The wheel and the middle button do not count.
class ClickMonitor : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void start() = 0;
    virtual void stop() = 0;

Q_SIGNALS:
    // The left or right button went down somewhere, on the main thread.
    void clicked();
};
