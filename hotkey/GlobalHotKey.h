// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

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

private:
    void onPressed();

    // A QPointer: the grabber is owned elsewhere and may go first at exit.
    QPointer<KeyGrabber> m_grabber;
    std::function<void()> m_callback;
    bool m_registered = false;
};
