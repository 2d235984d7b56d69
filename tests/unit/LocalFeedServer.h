// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <gtest/gtest.h>

// A minimal HTTP/1.1 server on 127.0.0.1 answering each path as told; the
// update tests never reach beyond this machine. Unknown paths get a 404.
class LocalFeedServer {
public:
    static constexpr int closeUnanswered = 0;
    static constexpr int neverAnswer = -1;

    LocalFeedServer()
    {
        EXPECT_TRUE(m_server.listen(QHostAddress::LocalHost));
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { serve(socket); });
        });
    }

    // status may also be closeUnanswered or neverAnswer.
    void answer(const QByteArray &path, int status, const QByteArray &body = {}, const QByteArray &headers = {})
    {
        m_routes.insert(path, { status, body, headers });
    }
    void redirect(const QByteArray &path, const QByteArray &location)
    {
        answer(path, 302, {}, "Location: " + location + "\r\n");
    }

    QUrl url(const QString &path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
    }
    int requests() const { return m_requests; }

    // An address where nothing listens: a port just given back.
    static QUrl deadUrl()
    {
        QTcpServer probe;
        EXPECT_TRUE(probe.listen(QHostAddress::LocalHost));
        return QUrl(QStringLiteral("http://127.0.0.1:%1/appcast.xml").arg(probe.serverPort()));
    }

private:
    struct Route {
        int status;
        QByteArray body;
        QByteArray headers;
    };

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

    QTcpServer m_server;
    QHash<QByteArray, Route> m_routes;
    QHash<QTcpSocket *, QByteArray> m_pending;
    int m_requests = 0;
};
