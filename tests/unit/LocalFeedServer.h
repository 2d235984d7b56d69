// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QHostAddress>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

// A minimal HTTPS/1.1 server on 127.0.0.1 answering each path as told; the
// update tests never reach beyond this machine. Its certificate is made for
// the test run, so a checker trusts it only when told to (caCertificates()).
// Unknown paths get a 404.
class LocalFeedServer {
public:
    static constexpr int closeUnanswered = 0;
    static constexpr int neverAnswer = -1;

    LocalFeedServer()
    {
        const Identity &identity = LocalFeedServer::identity();
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setLocalCertificate(identity.certificate);
        tls.setPrivateKey(identity.key);
        m_server.setSslConfiguration(tls);
        EXPECT_TRUE(m_server.listen(QHostAddress::LocalHost));
        QObject::connect(&m_server, &QTcpServer::pendingConnectionAvailable, &m_server, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { serve(socket); });
        });
    }

    // The server's self-signed certificate, to be trusted as an authority.
    static QList<QSslCertificate> caCertificates() { return { identity().certificate }; }
    // The same as a PEM file.
    static QString caCertificatesFile() { return identity().folder.filePath(QStringLiteral("cert.pem")); }

    // status may also be closeUnanswered or neverAnswer.
    void answer(const QByteArray &path, int status, const QByteArray &body = {}, const QByteArray &headers = {})
    {
        m_routes.insert(path, { status, body, headers });
    }
    void redirect(const QByteArray &path, const QByteArray &location)
    {
        answer(path, 302, {}, "Location: " + location + "\r\n");
    }

    QUrl url(const QString &path, const QString &scheme = QStringLiteral("https")) const
    {
        return QUrl(QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme).arg(m_server.serverPort()).arg(path));
    }
    int requests() const { return m_requests; }

    // An address where nothing listens: a port just given back.
    static QUrl deadUrl()
    {
        QTcpServer probe;
        EXPECT_TRUE(probe.listen(QHostAddress::LocalHost));
        return QUrl(QStringLiteral("https://127.0.0.1:%1/appcast.xml").arg(probe.serverPort()));
    }

private:
    struct Route {
        int status;
        QByteArray body;
        QByteArray headers;
    };
    // One key and certificate for 127.0.0.1 per test run, made by openssl.
    struct Identity {
        Identity()
        {
            const QString keyPath = folder.filePath(QStringLiteral("key.pem"));
            const QString certificatePath = folder.filePath(QStringLiteral("cert.pem"));
            const QString request = QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                                                   "-days 2 -subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1");
            const int status = QProcess::execute(QStringLiteral("openssl"),
                request.split(u' ')
                    + QStringList { QStringLiteral("-keyout"), keyPath, QStringLiteral("-out"), certificatePath });
            EXPECT_EQ(status, 0) << "openssl could not make the test certificate";
            certificate = QSslCertificate::fromPath(certificatePath).value(0);
            QFile keyFile(keyPath);
            if (keyFile.open(QIODevice::ReadOnly))
                key = QSslKey(&keyFile, QSsl::Ec);
        }

        QTemporaryDir folder;
        QSslCertificate certificate;
        QSslKey key;
    };

    static const Identity &identity()
    {
        static const Identity made;
        return made;
    }

    void serve(QTcpSocket *socket)
    {
        QByteArray &request = m_pending[socket];
        request += socket->readAll();
        if (!request.contains("\r\n\r\n"))
            return;
        ++m_requests;
        const Route route = m_routes.value(request.split(' ').value(1), { 404, "not here", {} });
        m_pending.remove(socket);
        if (route.status == neverAnswer)
            return;
        if (route.status != closeUnanswered) {
            const QByteArray head = "HTTP/1.1 " + QByteArray::number(route.status) + " Whatever\r\nContent-Length: "
                + QByteArray::number(route.body.size()) + "\r\nConnection: close\r\n" + route.headers + "\r\n";
            socket->write(head + route.body);
        }
        socket->disconnectFromHost();
    }

    QSslServer m_server;
    QHash<QByteArray, Route> m_routes;
    QHash<QTcpSocket *, QByteArray> m_pending;
    int m_requests = 0;
};
