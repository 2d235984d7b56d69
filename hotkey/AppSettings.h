// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "HotKeyConfig.h"
#include "UserDefaults.h"

#include <QObject>

// The four user preferences. Values are read once, at construction; every
// assignment writes all four keys at once, even when the value is unchanged.
class AppSettings : public QObject {
    Q_OBJECT

public:
    static constexpr qint64 defaultHistoryLimit = 200;

    // Reads the settings file at filePath; nothing is written until the first
    // assignment.
    explicit AppSettings(const QString &filePath, QObject *parent = nullptr);

    // The process-wide instance, on the user's settings file; created on first
    // use.
    static AppSettings &shared();
    // $XDG_CONFIG_HOME/Zettly/defaults.json
    static QString standardFilePath();

    HotKeyConfig hotkey() const { return m_hotkey; }
    qint64 historyLimit() const { return m_historyLimit; }
    bool autoPaste() const { return m_autoPaste; }
    bool ignoreSecretApps() const { return m_ignoreSecretApps; }

    void setHotkey(const HotKeyConfig &hotkey);
    // No range is enforced here: the store applies its own lower bound.
    void setHistoryLimit(qint64 limit);
    void setAutoPaste(bool enabled);
    void setIgnoreSecretApps(bool enabled);

    // Writes the four keys. A failed write leaves the file as it was.
    void save();

Q_SIGNALS:
    // Sent before any of the four values changes.
    void aboutToChange();
    // Sent after a value changed and the four keys were written.
    void changed();
    // Sent after changed() when the shortcut was assigned: the running app
    // registers the new global shortcut here. Before the app has connected,
    // an assignment only stores the value.
    void hotkeyChanged(const HotKeyConfig &hotkey);

private:
    template<typename T> void assign(T &field, const T &value);

    UserDefaults m_defaults;
    HotKeyConfig m_hotkey;
    qint64 m_historyLimit = defaultHistoryLimit;
    bool m_autoPaste = true;
    bool m_ignoreSecretApps = true;
};
