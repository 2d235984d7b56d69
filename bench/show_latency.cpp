// SPDX-License-Identifier: GPL-3.0-or-later
// Measures how soon the picker panel is on the screen and drawn after the
// global shortcut, and what the running zettly holds in memory when idle.
// Reports figures, asserts nothing.
//
//   show_latency --app /path/to/zettly [--history N] [--presses N]
//
// The real executable runs on a temporary home whose history is filled first.
// One X connection presses the shortcut through XTest and watches the panel's
// window: mapped (with its window manager frame, if any) and drawn by zettly.
// Run it through tests/x11/with-xvfb.sh (--wm for what a user has): it
// presses keys. PSS counts pages shared with other processes in part, so it
// drops while other Qt programs run; "private" and RSS do not.
#include "MeasureSupport.h"
#include "PanelProbe.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// Loading the history and building the app takes a moment before the
// shortcut is answered.
constexpr std::chrono::milliseconds startupTimeout = 15s;
constexpr std::chrono::milliseconds findRetry = 2s;
// A show or hide not seen after this is counted as lost.
constexpr std::chrono::milliseconds answerTimeout = 2s;
// Followed this long after the press that shows it, then hidden: drawings
// that come later are not part of the show.
constexpr std::chrono::milliseconds shownFor = 150ms;
// Between a hide and the next show: the window manager withdraws the panel
// after it is unmapped.
constexpr std::chrono::milliseconds hiddenFor = 150ms;
// Drawings later than this after a typed key are not part of it.
constexpr std::chrono::milliseconds typedFor = 120ms;
// X key codes (evdev + 8) of 1, 2, 3 and Backspace: the filler history's
// entries are numbered, so each digit narrows the list, each Backspace
// widens it again.
constexpr quint8 digitKeys[] = { 10, 11, 12 };
constexpr quint8 backspaceKey = 22;
// Without a CPU tick for this long, zettly waits in its event loop.
constexpr std::chrono::milliseconds quietPeriod = 300ms;

struct Options {
    QString appPath;
    qint64 history = 2000;
    int presses = 20;
    // Idle means minutes in real use: worker threads of the update check
    // and the name lookup end after 30 s without work.
    std::chrono::seconds idle { 2 };
};

struct Memory {
    qint64 pssKiB = 0;
    qint64 pssAnonKiB = 0;
    // Pages no other process maps: what zettly alone costs, whatever else
    // runs on the machine.
    qint64 privateKiB = 0;
    qint64 rssKiB = 0;
};

std::optional<Options> parseOptions(int argc, char *argv[])
{
    const auto line = MeasureSupport::parseCommandLine(
        argc, argv, { QStringLiteral("history"), QStringLiteral("presses"), QStringLiteral("idle") });
    if (!line || line->appPath.isEmpty() || line->counts.value(QStringLiteral("presses"), 1) == 0)
        return std::nullopt;
    Options options;
    options.appPath = line->appPath;
    options.history = line->counts.value(QStringLiteral("history"), options.history);
    options.presses = int(line->counts.value(QStringLiteral("presses"), options.presses));
    options.idle = std::chrono::seconds(line->counts.value(QStringLiteral("idle"), options.idle.count()));
    return options;
}

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

void printLine(const QString &line)
{
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

QString optionalFigure(const std::optional<Clock::duration> &duration)
{
    return duration ? MeasureSupport::figure(milliseconds(*duration)) : QStringLiteral("—");
}

// User and system time in clock ticks, from /proc/<pid>/stat; nothing once
// the process is gone or a zombie.
std::optional<qint64> cpuTicks(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray stat = file.readAll();
    // The command name may hold spaces; the fields after it do not.
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13 || fields[0] == "Z")
        return std::nullopt;
    return fields[11].toLongLong() + fields[12].toLongLong();
}

// Until zettly has used no CPU for a while; false if it exits or never calms.
bool waitUntilQuiet(PanelProbe &probe, qint64 pid)
{
    const Clock::time_point deadline = Clock::now() + startupTimeout;
    std::optional<qint64> ticks = cpuTicks(pid);
    Clock::time_point changedAt = Clock::now();
    while (ticks && Clock::now() < deadline) {
        probe.idle(50ms);
        const std::optional<qint64> now = cpuTicks(pid);
        if (now != ticks)
            changedAt = Clock::now();
        else if (Clock::now() - changedAt >= quietPeriod)
            return true;
        ticks = now;
    }
    return false;
}

std::optional<Memory> memory(qint64 pid)
{
    const auto read = [pid](const char *name) { return MeasureSupport::smapsKiB(pid, name); };
    const std::optional<qint64> pss = read("Pss");
    const std::optional<qint64> rss = read("Rss");
    if (!pss || !rss)
        return std::nullopt;
    return Memory { .pssKiB = *pss,
        .pssAnonKiB = read("Pss_Anon").value_or(0),
        .privateKiB = read("Private_Clean").value_or(0) + read("Private_Dirty").value_or(0),
        .rssKiB = *rss };
}

QString describe(const std::optional<Memory> &memory)
{
    if (!memory)
        return QStringLiteral("unreadable");
    const auto mib
        = [](qint64 kib) -> QString { return QString::number(double(kib) / 1024, 'f', 1) + QStringLiteral(" MiB"); };
    return QStringLiteral("PSS ") + mib(memory->pssKiB) + QStringLiteral(" (anonymous ") + mib(memory->pssAnonKiB)
        + QStringLiteral("), private ") + mib(memory->privateKiB) + QStringLiteral(", RSS ") + mib(memory->rssKiB);
}

void printSpread(const QString &what, const QList<double> &values, int expected)
{
    if (values.isEmpty()) {
        printLine(what + QStringLiteral(": none measured"));
        return;
    }
    QString line = what + QStringLiteral(" (%1): ").arg(values.size()) + MeasureSupport::spread(values);
    if (values.size() < expected)
        line += QStringLiteral("; MISSING in %1 presses").arg(expected - values.size());
    printLine(line);
}

struct Samples {
    QList<double> mapped;
    QList<double> painted;
    QList<double> paintedWhole;
    QList<double> lastPainted;
    bool complete = true;
};

Samples measure(PanelProbe &probe, int presses)
{
    Samples samples;
    printLine(QStringLiteral("press    mapped    painted     whole  last drawn"));
    for (int i = 1; i <= presses; ++i) {
        const PanelProbe::Show shown = probe.show(answerTimeout, shownFor);
        printLine(QStringLiteral("%1  %2  %3  %4  %5")
                      .arg(i, 5)
                      .arg(optionalFigure(shown.mapped), 8)
                      .arg(optionalFigure(shown.painted), 9)
                      .arg(optionalFigure(shown.paintedWhole), 8)
                      .arg(optionalFigure(shown.lastPainted), 10));
        const auto add = [](QList<double> &values, const std::optional<Clock::duration> &duration) {
            if (duration)
                values.append(milliseconds(*duration));
        };
        add(samples.mapped, shown.mapped);
        add(samples.painted, shown.painted);
        add(samples.paintedWhole, shown.paintedWhole);
        add(samples.lastPainted, shown.lastPainted);
        if (!shown.mapped || !shown.painted)
            samples.complete = false;
        if (probe.isPanelShown() && !probe.hide(answerTimeout)) {
            printLine(QStringLiteral("FAILED: the panel stayed on the screen after a second press"));
            samples.complete = false;
            break;
        }
        probe.idle(hiddenFor);
        if (!probe.error().isEmpty())
            break;
    }
    return samples;
}

// Shows the panel, types "123" then erases it, a few times: the time from
// each key to the list drawn anew.
QList<double> measureTyping(PanelProbe &probe, int rounds)
{
    QList<double> samples;
    for (int round = 0; round < rounds; ++round) {
        const PanelProbe::Show shown = probe.show(answerTimeout, shownFor);
        if (!shown.painted)
            break;
        QList<quint8> keys(std::begin(digitKeys), std::end(digitKeys));
        keys += QList<quint8>(std::size(digitKeys), backspaceKey);
        for (const quint8 key : std::as_const(keys)) {
            if (const std::optional<Clock::duration> drawn = probe.type(key, typedFor))
                samples.append(milliseconds(*drawn));
        }
        if (probe.isPanelShown())
            probe.hide(answerTimeout);
        probe.idle(hiddenFor);
    }
    return samples;
}

// Xvfb sessions have no runtime folder; zettly also keeps its one-copy lock
// there, so it gets one of its own.
QProcessEnvironment zettlyEnvironment(const QTemporaryDir &home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString runtime = home.filePath(QStringLiteral("runtime"));
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
    return environment;
}

bool isRunning(QProcess &process)
{
    // The exit is noticed through the event loop.
    QCoreApplication::processEvents();
    return process.state() == QProcess::Running;
}

int run(const Options &options)
{
    QTemporaryDir home;
    if (!home.isValid())
        return 1;
    MeasureSupport::prefillHistory(home.filePath(QStringLiteral("data/Zettly")),
        home.filePath(QStringLiteral("config/Zettly/defaults.json")), options.history);

    // Connected first, so that the panel's window is seen from its creation.
    PanelProbe probe;
    if (!probe.error().isEmpty()) {
        std::fprintf(stderr, "show_latency: %s\n", qPrintable(probe.error()));
        return 1;
    }
    const bool windowManager = probe.hasWindowManager();

    QProcess zettly;
    zettly.setProcessEnvironment(zettlyEnvironment(home));
    zettly.setProcessChannelMode(QProcess::ForwardedChannels);
    zettly.start(options.appPath, {});
    if (!zettly.waitForStarted()) {
        std::fprintf(stderr, "show_latency: could not start %s\n", qPrintable(options.appPath));
        return 1;
    }
    const qint64 pid = zettly.processId();
    printLine(
        QStringLiteral("zettly executable, history of %1 entries, %2")
            .arg(options.history)
            .arg(windowManager ? QStringLiteral("with a window manager") : QStringLiteral("without a window manager")));

    int status = 0;
    if (!waitUntilQuiet(probe, pid)) {
        printLine(QStringLiteral("FAILED: zettly exited or stayed busy for %1 s after its start")
                      .arg(std::chrono::duration_cast<std::chrono::seconds>(startupTimeout).count()));
        status = 1;
    } else {
        const std::optional<Memory> atStart = memory(pid);
        const std::optional<PanelProbe::Show> first = probe.findPanel(pid, findRetry, startupTimeout, shownFor);
        if (!first) {
            printLine(QStringLiteral("FAILED: no window of zettly came up on the shortcut within %1 s")
                          .arg(std::chrono::duration_cast<std::chrono::seconds>(startupTimeout).count()));
            status = 1;
        } else {
            printLine(QStringLiteral("panel %1, %2; first show after the start (not counted): mapped %3, painted %4, "
                                     "last drawn %5%6")
                          .arg(probe.panelSize())
                          .arg(probe.isReparented() ? QStringLiteral("in a frame") : QStringLiteral("not reparented"))
                          .arg(optionalFigure(first->mapped))
                          .arg(optionalFigure(first->painted))
                          .arg(optionalFigure(first->lastPainted))
                          .arg(probe.findPresses() > 1 ? QStringLiteral(" (after %1 presses)").arg(probe.findPresses())
                                                       : QString()));
            if (probe.isPanelShown())
                probe.hide(answerTimeout);
            probe.idle(hiddenFor);

            const Samples samples = measure(probe, options.presses);
            printSpread(QStringLiteral("press to mapped"), samples.mapped, options.presses);
            printSpread(QStringLiteral("press to painted"), samples.painted, options.presses);
            printSpread(QStringLiteral("press to whole panel painted"), samples.paintedWhole, options.presses);
            printSpread(QStringLiteral("press to last drawing while shown"), samples.lastPainted, options.presses);
            if (!samples.complete)
                status = 1;
            printSpread(QStringLiteral("typed key to last drawing"), measureTyping(probe, 5), 30);

            if (probe.isPanelShown())
                probe.hide(answerTimeout);
            probe.idle(options.idle);
            printLine(QStringLiteral("zettly memory at the start, before any show: ") + describe(atStart));
            printLine(
                QStringLiteral("zettly memory idle %1 s after the presses, panel hidden: ").arg(options.idle.count())
                + describe(memory(pid)));
        }
    }
    if (!probe.error().isEmpty()) {
        printLine(QStringLiteral("FAILED: ") + probe.error());
        status = 1;
    }
    if (!isRunning(zettly)) {
        printLine(QStringLiteral("FAILED: zettly exited during the measurement"));
        status = 1;
    }
    zettly.terminate();
    if (!zettly.waitForFinished(5000))
        zettly.kill();
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
    const std::optional<Options> options = parseOptions(argc, argv);
    if (!options) {
        std::fprintf(stderr, "usage: %s --app /path/to/zettly [--history N] [--presses N] [--idle seconds]\n", argv[0]);
        return 2;
    }
    // It presses a global shortcut dozens of times: never on someone's desktop.
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty() || display != qgetenv("ZETTLY_XVFB_DISPLAY")) {
        std::fprintf(stderr, "Run this through tests/x11/with-xvfb.sh, not on a desktop's display\n");
        return 2;
    }
    QCoreApplication app(argc, argv);
    return run(*options);
}
