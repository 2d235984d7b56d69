// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateCheckProcess.h"

#include "Appcast.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTimer>

namespace {

// Well past the helper's own network timeout.
constexpr int helperTimeoutMs = 60000;

QString notRunReason()
{
    return QStringLiteral("La recherche de mises à jour n’a pas pu être lancée.");
}

} // namespace

UpdateCheckProcess::UpdateCheckProcess(
    const QString &helperPath, const QUrl &feedUrl, const QString &currentVersion, QObject *parent)
    : UpdateCheck(parent)
    , m_helperPath(helperPath)
    , m_feedUrl(feedUrl)
    , m_currentVersion(currentVersion)
{
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    m_process.setStandardErrorFile(QProcess::nullDevice());
    connect(&m_process, &QProcess::finished, this, &UpdateCheckProcess::onFinished);
    m_watchdog.setSingleShot(true);
    m_watchdog.setInterval(helperTimeoutMs);
    // A killed helper ends through onFinished() as a failure.
    connect(&m_watchdog, &QTimer::timeout, &m_process, &QProcess::kill);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        m_watchdog.stop();
        Q_EMIT checkFailed(Failure::Unreachable, notRunReason());
    });
}

QString UpdateCheckProcess::installedHelperPath()
{
    const QString binDir = QCoreApplication::applicationDirPath();
    const QString beside = binDir + QStringLiteral("/zettly-update-check");
    if (QFileInfo(beside).isExecutable())
        return beside;
    return binDir + QStringLiteral("/" ZETTLY_HELPER_DIR_FROM_BIN "/zettly-update-check");
}

void UpdateCheckProcess::check()
{
    if (m_process.state() != QProcess::NotRunning)
        return;
    QStringList arguments;
    if (!m_extraCaCertificatesFile.isEmpty())
        arguments << QStringLiteral("--ca-certificates") << m_extraCaCertificatesFile;
    arguments << m_feedUrl.toString(QUrl::FullyEncoded) << m_currentVersion;
    m_process.start(m_helperPath, arguments);
    m_watchdog.start();
}

void UpdateCheckProcess::onFinished(int exitCode, QProcess::ExitStatus status)
{
    m_watchdog.stop();
    const QList<QByteArray> lines = m_process.readAllStandardOutput().split('\n');
    const QString kind = QString::fromUtf8(lines.value(0));
    if (status == QProcess::NormalExit && exitCode == 0) {
        // Checked again on this side: the helper handles what a server sent.
        const QUrl download = Appcast::webUrl(QString::fromUtf8(lines.value(3)));
        if (kind == u"update" && !download.isEmpty()) {
            Q_EMIT updateFound({ QString::fromUtf8(lines.at(1)), QString::fromUtf8(lines.at(2)), download });
            return;
        }
        if (kind == u"none") {
            Q_EMIT noUpdateFound();
            return;
        }
        bool known = false;
        const int failure = lines.value(1).toInt(&known);
        if (kind == u"failed" && known && failure >= 0 && failure <= int(Failure::InvalidFeed)) {
            Q_EMIT checkFailed(Failure(failure), QString::fromUtf8(lines.value(2)));
            return;
        }
    }
    Q_EMIT checkFailed(Failure::Unreachable, notRunReason());
}

QByteArray UpdateCheckProcess::describeUpdate(const AppcastRelease &release)
{
    // One field a line: a feed that slips a line break into a field must not
    // shift the next one into place.
    for (const QString &field : { release.version, release.shortVersion }) {
        if (field.contains(u'\n') || field.contains(u'\r'))
            return describeFailure(Failure::InvalidFeed, QStringLiteral("Le flux des mises à jour est illisible."));
    }
    return "update\n" + release.version.toUtf8() + '\n' + release.shortVersion.toUtf8() + '\n'
        + release.downloadUrl.toEncoded() + '\n';
}

QByteArray UpdateCheckProcess::describeNoUpdate()
{
    return "none\n";
}

QByteArray UpdateCheckProcess::describeFailure(Failure failure, const QString &reason)
{
    QString oneLine = reason;
    oneLine.replace(u'\n', u' ');
    return "failed\n" + QByteArray::number(int(failure)) + '\n' + oneLine.toUtf8() + '\n';
}
