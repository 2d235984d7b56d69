// SPDX-License-Identifier: GPL-3.0-or-later
#include "InstanceChannel.h"

#include "InstanceLock.h"

#include <QLocalServer>
#include <QLocalSocket>

namespace {

// A command is one short line; anything longer is not one of ours.
constexpr qint64 maxLineBytes = 64;

const QByteArray acknowledgement = QByteArrayLiteral("ok\n");

QString socketPath()
{
    return InstanceLock::runtimePath(QStringLiteral(".socket"));
}

} // namespace

InstanceChannel::InstanceChannel(QObject *parent)
    : QObject(parent)
    , m_server(new QLocalServer(this))
{
    // $XDG_RUNTIME_DIR is the user's alone already; the socket says so too.
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server, &QLocalServer::newConnection, this, &InstanceChannel::onNewConnection);
}

InstanceChannel::~InstanceChannel() = default;

bool InstanceChannel::listen()
{
    if (m_server->listen(socketPath()))
        return true;
    QLocalServer::removeServer(socketPath());
    return m_server->listen(socketPath());
}

bool InstanceChannel::send(Command command, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath());
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(nameOf(command) + '\n');
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeoutMs))
            return false;
    }
    return socket.readLine() == acknowledgement;
}

std::optional<InstanceChannel::Command> InstanceChannel::commandFromName(const QByteArray &name)
{
    for (const Command command : { Command::Toggle, Command::Show, Command::Hide }) {
        if (name == nameOf(command))
            return command;
    }
    return std::nullopt;
}

QByteArray InstanceChannel::nameOf(Command command)
{
    switch (command) {
    case Command::Toggle:
        return QByteArrayLiteral("toggle");
    case Command::Show:
        return QByteArrayLiteral("show");
    case Command::Hide:
        return QByteArrayLiteral("hide");
    }
    return {};
}

void InstanceChannel::onNewConnection()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        // The line may have come with the connection.
        if (socket->bytesAvailable())
            onReadyRead(socket);
    }
}

void InstanceChannel::onReadyRead(QLocalSocket *socket)
{
    if (!socket->canReadLine()) {
        if (socket->bytesAvailable() > maxLineBytes)
            socket->abort();
        return;
    }
    const std::optional<Command> command = commandFromName(socket->readLine(maxLineBytes).trimmed());
    if (!command) {
        socket->abort();
        return;
    }
    Q_EMIT commandReceived(*command);
    socket->write(acknowledgement);
    socket->flush();
    socket->disconnectFromServer();
}
