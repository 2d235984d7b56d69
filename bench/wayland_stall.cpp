// SPDX-License-Identifier: GPL-3.0-or-later
// Inside a headless sway (scripts/measure-wayland.sh): a program takes the
// clipboard and never answers, then wl-copy copies a text. Prints how late the
// text is read and the longest the main thread was held up meanwhile, over
// ten rounds. Reports figures, asserts none.
//
//   wayland_stall /path/to/zettly_stuck_source
#include "Heartbeat.h"
#include "PasteboardTypes.h"
#include "WaylandPasteboard.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QThread>

#include <algorithm>
#include <cstdio>

namespace {

// Runs the event loop until done() or the deadline.
template<typename Done> bool waitFor(Done done, int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.hasExpired(milliseconds))
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        QThread::usleep(200);
    }
    return true;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values[values.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s /path/to/zettly_stuck_source\n", argv[0]);
        return 2;
    }
    const auto pasteboard = WaylandPasteboard::open();
    if (!pasteboard) {
        std::fputs("no Wayland data-control here\n", stderr);
        return 1;
    }
    Heartbeat heartbeat;
    heartbeat.start();
    QList<double> delays;
    QList<double> stalls;
    for (int round = 0; round < 10; ++round) {
        QProcess stuck;
        stuck.start(QString::fromLocal8Bit(argv[1]), {});
        const qint64 before = pasteboard->changeCount();
        if (!stuck.waitForReadyRead(5000) || !waitFor([&] { return pasteboard->changeCount() != before; }, 5000)) {
            std::fputs("the stuck program did not take the clipboard\n", stderr);
            return 1;
        }
        heartbeat.takeLongestGap();
        const QByteArray text = "après le silence " + QByteArray::number(round);
        QProcess copy;
        copy.start(QStringLiteral("wl-copy"), { QString::fromUtf8(text) });
        copy.waitForFinished(5000);
        QElapsedTimer sinceCopy;
        sinceCopy.start();
        const bool read = waitFor([&] { return pasteboard->data(PasteboardTypes::string) == text; }, 5000);
        if (read) {
            delays.append(sinceCopy.nsecsElapsed() / 1e6);
            stalls.append(std::chrono::duration<double, std::milli>(heartbeat.takeLongestGap()).count());
        }
        stuck.closeWriteChannel();
        stuck.waitForFinished(5000);
    }
    std::printf("after a program that never answers, wl-copy's return to the text read (in process), %lld/10: "
                "median %.1f ms, max %.1f ms; longest main-thread stall per round: median %.1f ms, max %.1f ms\n",
        static_cast<long long>(delays.size()), median(delays),
        delays.isEmpty() ? 0 : *std::max_element(delays.cbegin(), delays.cend()), median(stalls),
        stalls.isEmpty() ? 0 : *std::max_element(stalls.cbegin(), stalls.cend()));
    return 0;
}
