// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdaterController.h"

#include "AppcastRelease.h"
#include "UpdateCheckProcess.h"
#include "UpdateDialog.h"

#include <QApplication>

#include <utility>

namespace {

// "0.2.0 (build 12)", as the About tab shows the running version.
QString displayed(const QString &shortVersion, const QString &version)
{
    if (shortVersion.isEmpty())
        return version;
    if (version.isEmpty() || version == shortVersion)
        return shortVersion;
    return QStringLiteral("%1 (build %2)").arg(shortVersion, version);
}

} // namespace

UpdaterController::UpdaterController(UpdateCheck *check, const QString &version, const QString &shortVersion,
    AutomaticChecks automaticChecks, QObject *parent)
    : QObject(parent)
    , m_checker(check)
    , m_version(version)
    , m_shortVersion(shortVersion)
    , m_automaticChecks(automaticChecks)
{
    m_checker->setParent(this);
    connect(m_checker, &UpdateCheck::updateFound, this, &UpdaterController::onUpdateFound);
    connect(m_checker, &UpdateCheck::noUpdateFound, this, &UpdaterController::onNoUpdateFound);
    connect(m_checker, &UpdateCheck::checkFailed, this,
        [this](UpdateCheck::Failure, const QString &reason) { onCheckFailed(reason); });
    connect(&m_timer, &QTimer::timeout, this, &UpdaterController::onTimer);
}

UpdaterController::~UpdaterController()
{
    delete m_dialog.data();
}

UpdaterController &UpdaterController::shared()
{
    // Leaked on purpose: destroying widgets after QApplication has gone, at
    // exit, would crash.
    const QString version = QStringLiteral(ZETTLY_BUILD_NUMBER);
    static UpdaterController *const instance
        = new UpdaterController(new UpdateCheckProcess(UpdateCheckProcess::installedHelperPath(),
                                    QUrl(QStringLiteral(ZETTLY_APPCAST_URL)), version),
            version, QStringLiteral(ZETTLY_VERSION),
            ZETTLY_AUTOMATIC_UPDATE_CHECKS ? AutomaticChecks::On : AutomaticChecks::Off);
    return *instance;
}

void UpdaterController::startAutomaticChecks(std::chrono::milliseconds firstDelay)
{
    // Not at once: start-up has better things to do than wait on a server.
    if (m_automaticChecks == AutomaticChecks::On)
        m_timer.start(firstDelay);
}

void UpdaterController::checkForUpdates()
{
    ensureDialog().showChecking();
    present(true);
    m_userWaiting = true;
    startCheck();
}

void UpdaterController::onTimer()
{
    // Hourly looks at the wall clock rather than one 24-hour timer, whose
    // monotonic clock stands still while the computer sleeps.
    m_timer.setInterval(std::chrono::hours(1));
    const qint64 elapsed = m_lastCheck.isValid() ? m_lastCheck.secsTo(QDateTime::currentDateTimeUtc()) : -1;
    if (elapsed >= 0 && elapsed < std::chrono::seconds(checkInterval).count())
        return;
    m_automaticWaiting = true;
    startCheck();
}

void UpdaterController::startCheck()
{
    m_lastCheck = QDateTime::currentDateTimeUtc();
    // A check already running answers both.
    m_checker->check();
}

void UpdaterController::onUpdateFound(const AppcastRelease &release)
{
    const bool user = std::exchange(m_userWaiting, false);
    const bool automatic = std::exchange(m_automaticWaiting, false);
    if (!user && !automatic)
        return;
    ensureDialog().showUpdate(displayed(release.shortVersion, release.version), runningVersion(), release.downloadUrl);
    // An offer nobody asked for must not take the keyboard from what the user types.
    present(user);
}

void UpdaterController::onNoUpdateFound()
{
    m_automaticWaiting = false;
    if (std::exchange(m_userWaiting, false)) {
        ensureDialog().showUpToDate(runningVersion());
        present(true);
    }
}

void UpdaterController::onCheckFailed(const QString &reason)
{
    m_automaticWaiting = false;
    if (std::exchange(m_userWaiting, false)) {
        ensureDialog().showFailure(reason);
        present(true);
    }
}

UpdateDialog &UpdaterController::ensureDialog()
{
    if (!m_dialog) {
        m_dialog = new UpdateDialog;
        // Closing the search abandons it: its outcome is no longer shown.
        connect(m_dialog, &QDialog::finished, this, [this] {
            if (m_dialog->state() == UpdateDialog::State::Checking)
                m_userWaiting = false;
        });
    }
    return *m_dialog;
}

void UpdaterController::present(bool activate)
{
    m_dialog->setAttribute(Qt::WA_ShowWithoutActivating, !activate);
    m_dialog->show();
    m_dialog->raise();
    // The app lives in the tray: without this the dialog may open behind
    // the window the user was in.
    if (activate)
        m_dialog->activateWindow();
}

QString UpdaterController::runningVersion() const
{
    return displayed(m_shortVersion, m_version);
}

UpdateDialog *UpdaterController::dialog() const
{
    return m_dialog;
}
