// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppcastRelease.h"

#include <QByteArray>
#include <QObject>
#include <QUrl>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

// Fetches the update feed and compares its newest release with the running
// version. One check at a time; each check ends with exactly one of
// updateFound(), noUpdateFound() or checkFailed().
class UpdateChecker : public QObject {
    Q_OBJECT

public:
    enum class Failure {
        // Not https nor http on this machine, or redirected elsewhere.
        BadAddress,
        // No answer: refused, unknown host, closed, timed out, TLS error.
        Unreachable,
        // An answer other than 2xx, or too many redirects.
        HttpError,
        // Not a feed, no release in it, or larger than maximumFeedSize.
        InvalidFeed,
    };
    Q_ENUM(Failure)

    static constexpr std::chrono::milliseconds defaultTimeout { 15000 };
    static constexpr qint64 maximumFeedSize = 4 * 1024 * 1024;
    static constexpr int maximumRedirects = 5;

    // currentVersion is compared with the feed items' version.
    UpdateChecker(const QUrl &feedUrl, const QString &currentVersion, QObject *parent = nullptr);
    ~UpdateChecker() override;

    // Starts a check; does nothing while one runs.
    void check();
    bool isChecking() const { return m_checking; }

    // Longest wait for the server between two pieces of the answer.
    void setTimeout(std::chrono::milliseconds timeout) { m_timeout = timeout; }

    // https anywhere, or http to this machine (for tests and local mirrors).
    static bool isAllowedAddress(const QUrl &url);

Q_SIGNALS:
    void updateFound(const AppcastRelease &release);
    void noUpdateFound();
    // reason is a French sentence for the user.
    void checkFailed(UpdateChecker::Failure failure, const QString &reason);

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
    std::chrono::milliseconds m_timeout = defaultTimeout;
    QNetworkReply *m_reply = nullptr;
    QByteArray m_body;
    bool m_checking = false;
    int m_redirects = 0;
    bool m_tooLarge = false;
};
