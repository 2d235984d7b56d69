// SPDX-License-Identifier: GPL-3.0-or-later
#include "TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr std::array handledSignals { SIGTERM, SIGINT, SIGHUP };
// [0] is written by the handler, [1] read by the event loop.
int sockets[2] = { -1, -1 };

void onSignal(int number)
{
    const int savedErrno = errno;
    const char byte = char(number);
    // Non-blocking: should the socket be full, a quit is already on its way.
    [[maybe_unused]] const ssize_t written = ::write(sockets[0], &byte, 1);
    errno = savedErrno;
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, sockets) != 0)
        return;
    m_notifier = new QSocketNotifier(sockets[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::quit);

    struct sigaction action { };
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int number : handledSignals)
        ::sigaction(number, &action, nullptr);
}

TerminationSignals::~TerminationSignals()
{
    if (!m_notifier)
        return;
    for (const int number : handledSignals)
        std::signal(number, SIG_DFL);
    ::close(sockets[0]);
    ::close(sockets[1]);
    sockets[0] = sockets[1] = -1;
}

void TerminationSignals::quit()
{
    char bytes[16];
    while (::read(sockets[1], bytes, sizeof bytes) > 0) { }
    QCoreApplication::quit();
}
