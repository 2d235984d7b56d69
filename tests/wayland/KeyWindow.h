// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>

// A native Wayland window of the tests' own (key_window_main.cpp), with the
// app_id given, which reports its focus and the keys it receives.
class KeyWindow {
public:
    explicit KeyWindow(const QString &appId);
    ~KeyWindow();

    // Whether it printed that line ("focus", or a shortcut such as
    // "Ctrl+V"), within a few seconds.
    bool waitForLine(const QByteArray &line);
    void close();

private:
    QProcess m_process;
    QByteArray m_output;
};
