// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateCheck.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QSslCertificate>
#include <QUrl>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

// Fetches the update feed and compares its newest release with the running
// version. One check at a time; each check ends with exactly one of
// updateFound(), noUpdateFound() or checkFailed().
class UpdateChecker : public UpdateCheck {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds defaultTimeout { 15000 };
    static constexpr qint64 maximumFeedSize = 4 * 1024 * 1024;
    static constexpr int maximumRedirects = 5;

    // currentVersion is compared with the feed items' version.
    UpdateChecker(const QUrl &feedUrl, const QString &currentVersion, QObject *parent = nullptr);
    ~UpdateChecker() override;

    // Starts a check; does nothing while one runs.
    void check() override;
    bool isChecking() const { return m_checking; }

    // Longest wait for the server between two pieces of the answer.
    void setTimeout(std::chrono::milliseconds timeout) { m_timeout = timeout; }

    // Trusted for the feed besides the system's certificate authorities: a
    // private mirror's own authority, or a test server's.
    void setExtraCaCertificates(const QList<QSslCertificate> &certificates) { m_extraCaCertificates = certificates; }

    // https with a host: nothing else is fetched, not even on this machine.
    static bool isAllowedAddress(const QUrl &url);

private:
    void get(const QUrl &url);
    void onReadyRead();
    // Appends what reply has; false once the feed is too large.
    bool takeBody(QNetworkReply &reply);
    void onFinished();
    void follow(const QUrl &target);
    void fail(Failure failure, const QString &reason);
    void finishWith(const QByteArray &feed);

    QNetworkAccessManager *m_manager;
    QUrl m_feedUrl;
    QString m_currentVersion;
    QList<QSslCertificate> m_extraCaCertificates;
    std::chrono::milliseconds m_timeout = defaultTimeout;
    QNetworkReply *m_reply = nullptr;
    QByteArray m_body;
    bool m_checking = false;
    int m_redirects = 0;
    bool m_tooLarge = false;
};
