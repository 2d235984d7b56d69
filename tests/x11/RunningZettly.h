// SPDX-License-Identifier: GPL-3.0-or-later
// Shared by the X11 and the Wayland tests.
#pragma once

#include "ClipItem.h"

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <utility>

// Another program's copy of text, as the session's tools make it (xclip under
// X11, wl-copy under Wayland); each test binary defines it.
void copyAsAnotherProgram(const QByteArray &text);

// The real zettly executable, started as a user would, on a home of its own
// (history, settings and runtime folders), so that copies of it in parallel
// tests never meet. What it logs, the reasons for skipping a copy included,
// is shown when the test fails.
class RunningZettly {
public:
    RunningZettly();
    ~RunningZettly();

    // Settings to start with, as the settings file's JSON object.
    bool writeSettings(const QByteArray &json);
    // Starts a copy on this home; several copies share it.
    QProcess &start();
    // Runs zettly on this home to its end, without the environment variables
    // named: its exit code (-1 if it did not end) and its error output.
    std::pair<int, QByteArray> run(const QStringList &arguments, const QStringList &unset = {}) const;
    // Copies until a copy lands in the history: what is on the clipboard
    // when zettly starts is never recorded, so this is when it is watching.
    bool waitUntilRecording();
    // The saved history, newest first. Read without a store: opening one
    // would tidy the folder under the running app's feet.
    QList<ClipItem> savedItems() const;
    QStringList savedTexts() const;
    QByteArray historyFile() const;
    bool waitForNewest(const QString &text) const;
    // Whether a running copy logged this, within a few seconds.
    bool waitForLog(const QByteArray &text) const;

    QProcessEnvironment environment() const { return m_environment; }

private:
    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    QList<QProcess *> m_processes;
    int m_probes = 0;
};
