// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <optional>
#include <utility>

class KeyGrabber;

// The one system-wide shortcut. Registering gives back the previous
// combination before taking the new one, so a refused combination leaves no
// shortcut at all, silently. A press reaches the callback one turn of the
// main loop after the grabber reports it, never from inside the report.
class GlobalHotKey : public QObject {
    Q_OBJECT

public:
    explicit GlobalHotKey(KeyGrabber &grabber, QObject *parent = nullptr);
    // Gives the combination back if this instance registered last.
    ~GlobalHotKey() override;

    // The instance that registered last, if it still exists. Its callback is
    // the one a press runs.
    static GlobalHotKey *shared();

    // keyCode and modifiers in the stored form (see HotKeyConfig).
    void registerHotKey(quint32 keyCode, quint32 modifiers, std::function<void()> callback);
    // Whether the desktop accepted the combination registered last.
    bool isRegistered() const { return m_registered; }

    // Gives the combination back until resume(), so that its keys reach our
    // own windows: while the user records a new shortcut, the current one
    // must be recorded, not open the picker. A registration meanwhile is
    // kept and taken at resume().
    void suspend();
    void resume();
    bool isSuspended() const { return m_suspended; }

private:
    void onPressed();

    // A QPointer: the grabber is owned elsewhere and may go first at exit.
    QPointer<KeyGrabber> m_grabber;
    std::function<void()> m_callback;
    std::optional<std::pair<quint32, quint32>> m_combination;
    bool m_registered = false;
    bool m_suspended = false;
};
