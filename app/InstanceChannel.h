// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <optional>

class QLocalServer;
class QLocalSocket;

// Hands a command from a later start of zettly to the copy that runs, over a
// local socket beside the instance lock. The running copy answers each
// command once it has carried it out, so that the sender knows it arrived.
class InstanceChannel : public QObject {
    Q_OBJECT

public:
    enum class Command { Toggle, Show, Hide };

    explicit InstanceChannel(QObject *parent = nullptr);
    ~InstanceChannel() override;

    // Starts taking commands; only the holder of the instance lock calls it,
    // so a socket left behind by a crashed copy is taken over.
    bool listen();

    // Sends command to the running copy and waits for its answer. False when
    // no copy answers within timeoutMs. Needs no event loop.
    static bool send(Command command, int timeoutMs = 3000);

    static std::optional<Command> commandFromName(const QByteArray &name);
    static QByteArray nameOf(Command command);

Q_SIGNALS:
    void commandReceived(InstanceChannel::Command command);

private:
    void onNewConnection();
    void onReadyRead(QLocalSocket *socket);

    QLocalServer *m_server;
};
