// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QString>

// A text window of another process (text_target.cpp), which a
// paste lands in: what it holds, and whether it has the keyboard focus.
class TextTarget {
public:
    TextTarget();
    ~TextTarget();

    // Started, mapped and focused.
    bool start();
    bool waitForFocus();
    bool waitForText(const QString &text);
    QString text();

private:
    void read();

    QProcess m_process;
    QString m_text;
    bool m_focused = false;
};
