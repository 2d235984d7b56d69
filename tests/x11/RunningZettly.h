// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QRect>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>

class OtherClient;

// The real zettly executable, started as a user would, on a home of its own
// (history, settings and runtime folders), so that copies of it in parallel
// tests never meet.
class RunningZettly {
public:
    RunningZettly();
    ~RunningZettly();

    // Settings to start with, as the settings file's JSON object.
    bool writeSettings(const QByteArray &json);
    // Starts a copy on this home; several copies share it.
    QProcess &start();
    // Copies until a copy lands in the history: what is on the clipboard
    // when zettly starts is never recorded, so this is when it is watching.
    bool waitUntilRecording();
    // The texts of the saved history, newest first. Read without a store:
    // opening one would tidy the folder under the running app's feet.
    QStringList savedTexts() const;
    QByteArray historyFile() const;
    bool waitForNewest(const QString &text) const;

    QProcessEnvironment environment() const { return m_environment; }

    // The picker panel of that process as it is on the screen, if it is.
    static std::optional<QRect> panelOf(const OtherClient &display, const QProcess &app);

private:
    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    QList<QProcess *> m_processes;
    int m_probes = 0;
};
