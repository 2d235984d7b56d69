// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "HotKeyConfig.h"

#include <QObject>
#include <QPointer>

class GlobalHotKey;
class QKeyEvent;
class QWidget;

// Takes the next key press made in the preferences window as a new shortcut.
// The key is read by its physical position, so that the stored shortcut
// names the same key whatever the layout; Super counts as Command and Alt
// as Option. Escape cancels. Modifier keys alone are let through: they only
// make up the shortcut. Every other key press is swallowed while recording.
class ShortcutRecorder : public QObject {
    Q_OBJECT

public:
    // Records only keys pressed in scope's window.
    explicit ShortcutRecorder(const QWidget *scope);
    ~ShortcutRecorder() override;

    bool isRecording() const { return m_recording; }
    // Suspends the global shortcut meanwhile, so that pressing the current
    // one records it instead of opening the picker.
    void start();
    void stop();

    // The shortcut a key press stands for; none for an unknown key or a
    // modifier key.
    static std::optional<HotKeyConfig> shortcutOf(const QKeyEvent &event);

Q_SIGNALS:
    void recordingChanged(bool recording);
    // A key press ended recording with this shortcut (not sent for Escape).
    void recorded(const HotKeyConfig &shortcut);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPointer<const QWidget> m_scope;
    bool m_recording = false;
    QPointer<GlobalHotKey> m_suspendedHotKey;
};
