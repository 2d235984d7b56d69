// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

// Tells of every mouse click on the desktop, whichever window it lands in,
// while started: the picker hides on a click outside it even when the click
// moves no keyboard focus (the desktop background, a dock).
class ClickMonitor : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void start() = 0;
    virtual void stop() = 0;

Q_SIGNALS:
    // A mouse button went down somewhere, on the main thread.
    void clicked();
};
