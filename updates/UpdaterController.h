// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <chrono>

class UpdateCheck;
class UpdateDialog;
struct AppcastRelease;

// Checks for new versions of Zettly: by itself shortly after start and then
// daily, offering a newer release in a small dialog (and showing nothing
// otherwise), and on the user's request with that dialog from the start.
class UpdaterController : public QObject {
    Q_OBJECT

public:
    enum class AutomaticChecks { Off, On };

    static constexpr std::chrono::seconds firstCheckDelay { 3 };
    static constexpr std::chrono::hours checkInterval { 24 };

    // Checks through check, which this takes. version is compared with the
    // feed items' version (the build number); shortVersion is what the user
    // is shown beside it. Needs a QApplication.
    UpdaterController(UpdateCheck *check, const QString &version, const QString &shortVersion,
        AutomaticChecks automaticChecks, QObject *parent = nullptr);
    ~UpdaterController() override;

    // The process-wide instance on the feed address and the version compiled
    // in; created on first use, never destroyed.
    static UpdaterController &shared();

    // With automatic checks on: the first after firstDelay, then daily.
    void startAutomaticChecks(std::chrono::milliseconds firstDelay = firstCheckDelay);

    // The user's check: brings the dialog forward, shows the search, then
    // its outcome, whatever it is.
    void checkForUpdates();

    // The dialog, once a check has needed it.
    UpdateDialog *dialog() const;

private:
    void onTimer();
    void startCheck();
    void onUpdateFound(const AppcastRelease &release);
    void onNoUpdateFound();
    void onCheckFailed(const QString &reason);
    UpdateDialog &ensureDialog();
    void present(bool activate);
    QString runningVersion() const;

    UpdateCheck *m_checker;
    QString m_version;
    QString m_shortVersion;
    QPointer<UpdateDialog> m_dialog;
    AutomaticChecks m_automaticChecks;
    QTimer m_timer;
    QDateTime m_lastCheck;
    // Who waits for the running check's outcome.
    bool m_userWaiting = false;
    bool m_automaticWaiting = false;
};
