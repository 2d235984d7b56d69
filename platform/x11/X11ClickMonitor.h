// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClickMonitor.h"

#include <memory>

class QSocketNotifier;
struct xcb_connection_t;

// Every left or right button press on the display, through XInput 2 raw
// events on the root window. On an X connection of its own, read on the main
// thread as it becomes readable, so that Qt's own XInput handling never sees
// these events.
class X11ClickMonitor : public ClickMonitor {
    Q_OBJECT

public:
    explicit X11ClickMonitor(QObject *parent = nullptr);
    ~X11ClickMonitor() override;

    // False without an X server or XInput 2: no click is ever reported.
    bool isValid() const { return m_valid; }

    void start() override;
    void stop() override;

private:
    void select(bool rawButtonPresses);
    void readEvents();

    xcb_connection_t *m_connection;
    quint32 m_root = 0;
    quint8 m_xinputOpcode = 0;
    bool m_valid = false;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
