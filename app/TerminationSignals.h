// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QSocketNotifier;

// Turns SIGTERM, SIGINT and SIGHUP (a logout, kill, Ctrl+C) into a quit of
// the event loop, so that the app ends as it does from its menu: what is still
// to be saved is written first. A signal handler may do next to nothing, so it
// only writes a byte to a socket that the event loop watches.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    // Puts the default handlers back.
    ~TerminationSignals() override;

private:
    void quit();

    QSocketNotifier *m_notifier = nullptr;
};
