// SPDX-License-Identifier: GPL-3.0-or-later
// The other programs on the tests' Wayland session, and the waiting they
// share.
#pragma once

#include "Workspace.h"

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <optional>

// wl-clipboard's tools, as another program on the session's clipboard.
namespace WlClipboard {

// Offers bytes under one type, as wl-copy does; true once it serves them.
bool copy(const QByteArray &bytes, const QString &type = QStringLiteral("text/plain"));
// What a paste of that type gets; nothing when the clipboard is empty or
// does not offer it.
std::optional<QByteArray> paste(const QString &type = QStringLiteral("text/plain"));

} // namespace WlClipboard

// Whether the window in front comes to be this application's (none: no
// window at all) within a few seconds.
bool waitForFront(const Workspace &workspace, const std::optional<QString> &identifier);

// A native Wayland window of the tests' own (key_window_main.cpp), with the
// app_id given, which reports its focus and the keys it receives.
class KeyWindow {
public:
    explicit KeyWindow(const QString &appId);
    ~KeyWindow() { close(); }

    // Whether it printed that line ("focus", or a shortcut such as
    // "Ctrl+V"), within a few seconds.
    bool waitForLine(const QByteArray &line);
    void close();

private:
    QProcess m_process;
    QByteArray m_output;
};

// The program of stuck_source_main.cpp, which takes the clipboard offering
// text and then never answers; it holds on while this lives.
class StuckSource {
public:
    ~StuckSource();
    // True once it owns the clipboard.
    bool start();

private:
    QProcess m_process;
};
