// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppSettings;
class QCheckBox;

// Whether copies made in password managers, or marked as secret, are kept
// out of the history. The watcher reads the setting at each tick.
class PrivacyTab : public QWidget {
    Q_OBJECT

public:
    explicit PrivacyTab(AppSettings &settings, QWidget *parent = nullptr);

    QCheckBox *ignoreSecretAppsBox() const { return m_ignoreSecretApps; }

private:
    void readSettings();

    AppSettings &m_settings;
    QCheckBox *m_ignoreSecretApps;
};
