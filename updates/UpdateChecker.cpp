// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateChecker.h"

#include "Appcast.h"
#include "VersionComparison.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>

#include <utility>

namespace {

QString unreachableReason(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
        return QStringLiteral("Le serveur des mises à jour refuse la connexion.");
    case QNetworkReply::HostNotFoundError:
        return QStringLiteral("Le serveur des mises à jour est introuvable.");
    case QNetworkReply::RemoteHostClosedError:
        return QStringLiteral("Le serveur des mises à jour a coupé la connexion.");
    // Qt ends a transfer that stalls past its timeout as a cancellation.
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError:
        return QStringLiteral("Le serveur des mises à jour n’a pas répondu à temps.");
    case QNetworkReply::SslHandshakeFailedError:
        return QStringLiteral("La connexion sécurisée au serveur des mises à jour a échoué.");
    default:
        return QStringLiteral("Le serveur des mises à jour est injoignable.");
    }
}

QString tooLargeReason()
{
    return QStringLiteral("Le flux des mises à jour est trop volumineux.");
}

} // namespace

UpdateChecker::UpdateChecker(const QUrl &feedUrl, const QString &currentVersion, QObject *parent)
    : UpdateCheck(parent)
    , m_manager(new QNetworkAccessManager(this))
    , m_feedUrl(feedUrl)
    , m_currentVersion(currentVersion)
{
}

UpdateChecker::~UpdateChecker()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
}

bool UpdateChecker::isAllowedAddress(const QUrl &url)
{
    return url.isValid() && url.scheme() == u"https" && !url.host().isEmpty();
}

void UpdateChecker::check()
{
    if (m_checking)
        return;
    m_checking = true;
    m_redirects = 0;
    if (!isAllowedAddress(m_feedUrl)) {
        // Reported from the event loop, like every other outcome.
        QMetaObject::invokeMethod(
            this,
            [this] { fail(Failure::BadAddress, QStringLiteral("L’adresse des mises à jour n’est pas acceptée.")); },
            Qt::QueuedConnection);
        return;
    }
    get(m_feedUrl);
}

void UpdateChecker::get(const QUrl &url)
{
    m_body.clear();
    m_tooLarge = false;
    QNetworkRequest request(url);
    // Redirects are followed here: each target is vetted before anything is
    // sent to it. Qt's automatic policies tell only once it is sent, and
    // Qt 6.4's user-verified one loses the answer after the second hop.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(static_cast<int>(m_timeout.count()));
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Zettly"));
    if (!m_extraCaCertificates.isEmpty()) {
        QSslConfiguration tls = request.sslConfiguration();
        tls.addCaCertificates(m_extraCaCertificates);
        request.setSslConfiguration(tls);
    }
    m_reply = m_manager->get(request);
    connect(m_reply, &QNetworkReply::readyRead, this, &UpdateChecker::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &UpdateChecker::onFinished);
}

void UpdateChecker::onReadyRead()
{
    if (!takeBody(*m_reply)) {
        m_tooLarge = true;
        m_reply->abort();
    }
}

bool UpdateChecker::takeBody(QNetworkReply &reply)
{
    // A server that never stops sending would otherwise never time out.
    m_body += reply.read(maximumFeedSize + 1 - m_body.size());
    return m_body.size() <= maximumFeedSize;
}

void UpdateChecker::onFinished()
{
    QNetworkReply *reply = std::exchange(m_reply, nullptr);
    reply->deleteLater();
    if (m_tooLarge)
        return fail(Failure::InvalidFeed, tooLargeReason());
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const int code = status.toInt();
    const QString httpReason = QStringLiteral("Le serveur des mises à jour a répondu par l’erreur HTTP %1.");
    if (status.isValid() && code >= 400)
        return fail(Failure::HttpError, httpReason.arg(code));
    if (reply->error() != QNetworkReply::NoError)
        return fail(Failure::Unreachable, unreachableReason(reply->error()));
    const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (code >= 300 && code <= 399 && !target.isEmpty())
        return follow(reply->url().resolved(target));
    if (status.isValid() && (code < 200 || code > 299))
        return fail(Failure::HttpError, httpReason.arg(code));
    if (!takeBody(*reply))
        return fail(Failure::InvalidFeed, tooLargeReason());
    finishWith(m_body);
}

void UpdateChecker::follow(const QUrl &target)
{
    // A redirect to plain http would let anyone on the way write the feed.
    if (!isAllowedAddress(target))
        return fail(
            Failure::BadAddress, QStringLiteral("Le serveur des mises à jour renvoie vers une adresse refusée."));
    if (++m_redirects > maximumRedirects)
        return fail(Failure::HttpError, QStringLiteral("Le serveur des mises à jour renvoie d’adresse en adresse."));
    get(target);
}

void UpdateChecker::finishWith(const QByteArray &feed)
{
    m_checking = false;
    const std::optional<AppcastRelease> newest = Appcast::newestRelease(feed);
    if (!newest) {
        Q_EMIT checkFailed(Failure::InvalidFeed, QStringLiteral("Le flux des mises à jour est illisible."));
        return;
    }
    if (VersionComparison::compare(newest->version, m_currentVersion) > 0)
        Q_EMIT updateFound(*newest);
    else
        Q_EMIT noUpdateFound();
}

void UpdateChecker::fail(Failure failure, const QString &reason)
{
    m_checking = false;
    Q_EMIT checkFailed(failure, reason);
}
