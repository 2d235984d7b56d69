// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipboardSnapshot.h"

#include <QObject>
#include <QUuid>

#include <chrono>
#include <optional>

class AppSettings;
class ClipboardStore;
class Pasteboard;
class QTimer;
class Workspace;

// Records each change of the clipboard in the history, except our own writes
// and, while the privacy switch is on, secrets: data its writer marked
// concealed or transient, and copies made while a password manager is in
// front. The bytes of a secret are not even read. When the program whose copy
// was recorded last quits, taking its copy with it, the entry goes back on
// the clipboard.
class ClipboardWatcher : public QObject {
    Q_OBJECT

public:
    // Safety net beside the change notices: a change never waits longer.
    static constexpr std::chrono::milliseconds pollInterval { 800 };

    // What the clipboard holds now is never recorded: only later changes.
    ClipboardWatcher(Pasteboard &pasteboard, const Workspace &workspace, ClipboardStore &store,
        const AppSettings &settings, QObject *parent = nullptr);
    ~ClipboardWatcher() override;

    // Starts, or restarts, watching.
    void start();

    Pasteboard &pasteboard() const { return m_pasteboard; }
    // The change count right after our own last write, until the next change
    // is looked at; that change is then skipped if it is this one.
    std::optional<qint64> ownWriteCount() const { return m_ownWriteCount; }
    void setOwnWriteCount(std::optional<qint64> count) { m_ownWriteCount = count; }

private:
    // A change recorded as the entry with this id.
    struct Recorded {
        qint64 change;
        QUuid id;
    };

    void tick();
    void handle(qint64 change);
    ReadScope readScope() const;
    bool isPasswordManagerInFront() const;
    void capture(qint64 change);
    void restoreAfterOwnerQuit(qint64 change);

    Pasteboard &m_pasteboard;
    const Workspace &m_workspace;
    ClipboardStore &m_store;
    const AppSettings &m_settings;
    qint64 m_lastChange;
    std::optional<qint64> m_ownWriteCount;
    std::optional<Recorded> m_recorded;
    QTimer *m_timer = nullptr;
};
