// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateCheck.h"

#include <QProcess>
#include <QTimer>
#include <QUrl>

// Runs the check in the zettly-update-check helper: the TLS stack and the
// parsing of what a server sends stay out of the process that holds the
// clipboard history, and their memory goes when the helper ends.
class UpdateCheckProcess : public UpdateCheck {
    Q_OBJECT

public:
    UpdateCheckProcess(
        const QString &helperPath, const QUrl &feedUrl, const QString &currentVersion, QObject *parent = nullptr);

    // The helper installed beside the executable, or in its libexec folder.
    static QString installedHelperPath();

    void check() override;

    // A PEM file whose certificate authorities the helper trusts for the feed
    // besides the system's: a private mirror's own, or a test server's.
    void setExtraCaCertificatesFile(const QString &path) { m_extraCaCertificatesFile = path; }

    // What the helper prints for each outcome, one field a line.
    static QByteArray describeUpdate(const AppcastRelease &release);
    static QByteArray describeNoUpdate();
    static QByteArray describeFailure(Failure failure, const QString &reason);

private:
    void onFinished(int exitCode, QProcess::ExitStatus status);

    QProcess m_process;
    QTimer m_watchdog;
    QString m_helperPath;
    QUrl m_feedUrl;
    QString m_currentVersion;
    QString m_extraCaCertificatesFile;
};
