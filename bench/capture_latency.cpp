// SPDX-License-Identifier: GPL-3.0-or-later
// Measures how soon a copy made by another X client lands in clips.json, and
// what a clipboard owner that never answers costs: main-thread stalls, and the
// delay before the next copy is recorded. Reports figures, asserts nothing.
//
//   capture_latency [--history N [--entry-chars N]] [--copies N] [--frozen N] [--app /path/to/zettly]
//   capture_latency --big MiB --app /path/to/zettly
//
// Without --app, the app's objects run in this process on temporary folders,
// and a heartbeat on the main thread measures its stalls. With --app, the real
// executable runs on temporary folders; only delays and its memory are
// measured. With --big, one text of that many MiB is copied (in INCR chunks,
// as toolkits send it) once the app records: the delay to clips.json and the
// app's peak resident memory (VmHWM) before and after are printed. Run it
// through tests/x11/with-xvfb.sh: it takes the clipboard.
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "ClipboardWatcher.h"
#include "Heartbeat.h"
#include "HistoryFileWatch.h"
#include "HistoryFolder.h"
#include "MeasureSupport.h"
#include "OtherClient.h"
#include "X11Pasteboard.h"
#include "X11Workspace.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <string_view>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// A copy not in the history after this is counted as lost: a save of a
// history of hundreds of MB takes seconds.
constexpr auto landingTimeout = 10s;
// The real app records nothing until its event loop runs, and the first
// saves of a large history queue up.
constexpr auto startupTimeout = 30s;
// How long after the stuck owner the next copy comes.
constexpr auto frozenLead = 100ms;
// Longer than the reader's 500 ms answer timeout, so that anything the stuck
// read still causes falls in the measured window.
constexpr auto frozenSettle = 700ms;

struct Options {
    qint64 history = 0;
    qint64 bigMiB = 0;
    // Characters of each filler entry's text.
    qint64 entryChars = 200;
    int copies = 20;
    int frozenRuns = 5;
    QString appPath;
};

struct Results {
    std::optional<double> firstCopyMs;
    QList<double> copyMs;
    int lostCopies = 0;
    std::optional<double> idleStallMs;
    QList<double> copyStallMs;
    QList<double> afterFrozenMs;
    int lostAfterFrozen = 0;
    // Runs where the reader had asked the frozen owner before the next copy
    // came: the others do not test the abandoned read.
    int frozenAsked = 0;
    QList<double> frozenStallMs;
    std::optional<qint64> pssKiB;
    std::optional<qint64> rssKiB;
    bool appDied = false;
};

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

std::optional<Options> parseOptions(int argc, char *argv[])
{
    const auto line = MeasureSupport::parseCommandLine(argc, argv,
        { QStringLiteral("history"), QStringLiteral("entry-chars"), QStringLiteral("copies"),
            QStringLiteral("frozen"), QStringLiteral("big") });
    if (!line || line->counts.value(QStringLiteral("copies"), 1) == 0)
        return std::nullopt;
    Options options;
    options.appPath = line->appPath;
    options.history = line->counts.value(QStringLiteral("history"), options.history);
    options.entryChars = line->counts.value(QStringLiteral("entry-chars"), options.entryChars);
    options.copies = int(line->counts.value(QStringLiteral("copies"), options.copies));
    options.frozenRuns = int(line->counts.value(QStringLiteral("frozen"), options.frozenRuns));
    options.bigMiB = line->counts.value(QStringLiteral("big"), 0);
    if (options.bigMiB > 0 && options.appPath.isEmpty())
        return std::nullopt;
    return options;
}

QList<TestSelectionOwner::Target> textTargets(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    return { { "UTF8_STRING", utf8 }, { "text/plain;charset=utf-8", utf8 } };
}

// Another program's copies, made from a thread of their own.
struct CopySession {
    HistoryFileWatch &watch;
    // Null when the app runs in another process.
    Heartbeat *heartbeat;
    const Options &options;
    Results &results;
    std::mt19937 random { 1 };
    int sequence = 0;
    // The owner of the last copy; replaced only once the next copy is
    // recorded, so that the clipboard never goes empty in between.
    std::unique_ptr<TestSelectionOwner> owner;
};

QString nextText(CopySession &session)
{
    return QStringLiteral("copie n° %1 pour mesurer la latence").arg(++session.sequence);
}

void pause(CopySession &session)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(session.random() % 51 + 100));
}

std::optional<double> takeStall(const CopySession &session)
{
    if (!session.heartbeat)
        return std::nullopt;
    return std::chrono::duration<double, std::milli>(session.heartbeat->takeLongestGap()).count();
}

// What was on the clipboard before the app watched it is never recorded: copy
// until a copy lands. Each try waits twice as long as the one before: with a
// history of hundreds of MB a save takes seconds, and a copy landing after
// the next one was made would never be seen as the newest.
bool waitUntilRecording(CopySession &session)
{
    const Clock::time_point deadline = Clock::now() + startupTimeout;
    for (auto wait = std::chrono::milliseconds(200); Clock::now() < deadline; wait *= 2) {
        session.watch.drain();
        const QString text = nextText(session);
        auto next = std::make_unique<TestSelectionOwner>(textTargets(text));
        const Clock::time_point start = next->ownershipRequestedAt();
        if (start == Clock::time_point())
            return false;
        const std::optional<Clock::time_point> landed = session.watch.waitForNewest(text, wait);
        session.owner = std::move(next);
        if (landed) {
            session.results.firstCopyMs = milliseconds(*landed - start);
            return true;
        }
    }
    return false;
}

// The delay from taking the clipboard to clips.json holding the copied text;
// nothing when it does not get there. A frozen owner may come first.
std::optional<double> copy(CopySession &session, bool afterFrozenOwner)
{
    session.watch.drain();
    std::unique_ptr<TestSelectionOwner> frozen;
    if (afterFrozenOwner) {
        frozen = std::make_unique<TestSelectionOwner>(
            textTargets(QStringLiteral("jamais lu")), TestSelectionOwner::Behaviour::NeverAnswers);
        std::this_thread::sleep_until(frozen->ownershipRequestedAt() + frozenLead);
    }
    const QString text = nextText(session);
    auto next = std::make_unique<TestSelectionOwner>(textTargets(text));
    const Clock::time_point start = next->ownershipRequestedAt();
    if (start == Clock::time_point())
        return std::nullopt;
    const std::optional<Clock::time_point> landed = session.watch.waitForNewest(text, landingTimeout);
    session.owner = std::move(next);
    if (frozen && frozen->requestedTargets().contains("TARGETS"))
        ++session.results.frozenAsked;
    if (!landed)
        return std::nullopt;
    return milliseconds(*landed - start);
}

void printLine(const QString &line)
{
    std::printf("%s\n", line.toUtf8().constData());
}

// A line of a /proc/<pid>/status, such as VmHWM, in KiB.
std::optional<qint64> statusKiB(qint64 pid, const QByteArray &name)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return std::nullopt;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(QByteArray(name + ':')))
            return line.mid(name.size() + 1).trimmed().split(' ').value(0).toLongLong();
    }
    return std::nullopt;
}

// A text of about that many MiB, lines of a log with a few accents, that
// starts with a mark of its own.
QString bigText(qint64 mebibytes, int mark)
{
    const qint64 bytes = mebibytes * 1024 * 1024;
    QByteArray utf8 = "grande copie n° " + QByteArray::number(mark) + '\n';
    utf8.reserve(bytes + 100);
    for (qint64 line = 0; utf8.size() < bytes; ++line)
        utf8 += "2026-11-24 10:" + QByteArray::number(line % 60) + " ligne " + QByteArray::number(line)
            + " : état du journal, rien à signaler\n";
    return QString::fromUtf8(utf8);
}

// One big copy once the app records: its delay to clips.json, and the app's
// peak memory before and after.
void measureBigCopy(CopySession &session, qint64 pid)
{
    if (!waitUntilRecording(session))
        return;
    const std::optional<qint64> peakBefore = statusKiB(pid, "VmHWM");
    const QString text = bigText(session.options.bigMiB, ++session.sequence);
    const QByteArray utf8 = text.toUtf8();
    session.watch.drain();
    auto owner = std::make_unique<TestSelectionOwner>(
        QList<TestSelectionOwner::Target> { { "UTF8_STRING", utf8 }, { "text/plain;charset=utf-8", utf8 } });
    const Clock::time_point start = owner->ownershipRequestedAt();
    const std::optional<Clock::time_point> landed = session.watch.waitForNewest(text, 20s);
    const std::optional<qint64> peakAfter = statusKiB(pid, "VmHWM");
    const std::optional<qint64> rssAfter = statusKiB(pid, "VmRSS");
    printLine(
        QStringLiteral("one copy of %1 MiB of text (%2 bytes of UTF-8)").arg(session.options.bigMiB).arg(utf8.size()));
    if (landed)
        printLine(QStringLiteral("  copy to clips.json: ") + MeasureSupport::figure(milliseconds(*landed - start)));
    else
        printLine(QStringLiteral("  LOST: not in clips.json after 20 s"));
    printLine(QStringLiteral("  zettly peak RSS (VmHWM): before %1 MiB, after %2 MiB; RSS after %3 MiB")
                  .arg(double(peakBefore.value_or(0)) / 1024, 0, 'f', 1)
                  .arg(double(peakAfter.value_or(0)) / 1024, 0, 'f', 1)
                  .arg(double(rssAfter.value_or(0)) / 1024, 0, 'f', 1));
    session.results.lostCopies = landed ? 0 : 1;
}

void measure(CopySession &session)
{
    Results &results = session.results;
    if (!waitUntilRecording(session))
        return;
    takeStall(session);
    std::this_thread::sleep_for(500ms);
    results.idleStallMs = takeStall(session);

    for (int i = 0; i < session.options.copies; ++i) {
        pause(session);
        takeStall(session);
        if (const std::optional<double> delay = copy(session, false))
            results.copyMs.append(*delay);
        else
            ++results.lostCopies;
        if (const std::optional<double> stall = takeStall(session))
            results.copyStallMs.append(*stall);
    }

    for (int i = 0; i < session.options.frozenRuns; ++i) {
        pause(session);
        takeStall(session);
        if (const std::optional<double> delay = copy(session, true))
            results.afterFrozenMs.append(*delay);
        else
            ++results.lostAfterFrozen;
        std::this_thread::sleep_for(frozenSettle);
        if (const std::optional<double> stall = takeStall(session))
            results.frozenStallMs.append(*stall);
    }
}

void printSpread(const QString &what, const QList<double> &values, int lost = 0)
{
    if (values.isEmpty()) {
        printLine(what + QStringLiteral(": none measured"));
    } else {
        printLine(what + QStringLiteral(" (%1): ").arg(values.size()) + MeasureSupport::spread(values));
    }
    if (lost > 0)
        printLine(QStringLiteral("  LOST: %1 not in clips.json after %2 s").arg(lost).arg(landingTimeout.count()));
}

void printResults(const Options &options, const Results &results)
{
    printLine((options.appPath.isEmpty() ? QStringLiteral("in process") : QStringLiteral("zettly executable"))
        + QStringLiteral(", history of %1 entries").arg(options.history));
    if (!results.firstCopyMs) {
        printLine(QStringLiteral("FAILED: no copy reached clips.json within %1 s").arg(startupTimeout.count()));
        return;
    }
    printLine(
        QStringLiteral("first copy to clips.json (not counted): ") + MeasureSupport::figure(*results.firstCopyMs));
    printSpread(QStringLiteral("copy to clips.json"), results.copyMs, results.lostCopies);
    QStringList each;
    for (const double ms : results.copyMs)
        each.append(QString::number(ms, 'f', 1));
    printLine(QStringLiteral("  each, ms: ") + each.join(u' '));
    if (results.idleStallMs) {
        printLine(QStringLiteral("main-thread stall, idle 500 ms: ") + MeasureSupport::figure(*results.idleStallMs));
        printSpread(QStringLiteral("main-thread stall per copy"), results.copyStallMs);
    }
    if (options.frozenRuns > 0) {
        printSpread(QStringLiteral("next copy to clips.json after a frozen owner"), results.afterFrozenMs,
            results.lostAfterFrozen);
        printLine(QStringLiteral("  the frozen owner had been asked in %1 of %2 runs")
                      .arg(results.frozenAsked)
                      .arg(options.frozenRuns));
        if (results.idleStallMs)
            printSpread(QStringLiteral("main-thread stall per frozen-owner run"), results.frozenStallMs);
    }
    if (results.pssKiB)
        printLine(QStringLiteral("zettly memory at the end: PSS %1 MiB, RSS %2 MiB")
                      .arg(double(*results.pssKiB) / 1024, 0, 'f', 1)
                      .arg(double(results.rssKiB.value_or(0)) / 1024, 0, 'f', 1));
    if (results.appDied)
        printLine(QStringLiteral("FAILED: zettly exited during the measurement"));
    std::fflush(stdout);
}

bool succeeded(const Results &results)
{
    return results.firstCopyMs && results.lostCopies == 0 && results.lostAfterFrozen == 0 && !results.appDied;
}

// Xvfb sessions have no runtime folder, and Qt warns about it at start.
void provideRuntimeDir(const QTemporaryDir &home)
{
    if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        return;
    const QString path = home.filePath(QStringLiteral("runtime"));
    QDir().mkpath(path);
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(path));
}

int runInProcess(int argc, char *argv[], const Options &options)
{
    QTemporaryDir home;
    if (!home.isValid())
        return 1;
    provideRuntimeDir(home);
    qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication app(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const QString historyPath = home.filePath(QStringLiteral("Zettly"));
    if (options.history > 0)
        HistoryFolder(historyPath).save(MeasureSupport::fillerHistory(options.history, options.entryChars));

    // As main.cpp builds it, on temporary folders.
    AppSettings settings(home.filePath(QStringLiteral("defaults.json")));
    if (options.history > AppSettings::defaultHistoryLimit)
        settings.setHistoryLimit(options.history);
    ClipboardStore store(settings, historyPath);
    X11Pasteboard pasteboard;
    X11Workspace workspace;
    ClipboardWatcher watcher(pasteboard, workspace, store, settings);
    watcher.start();

    HistoryFileWatch watch(historyPath);
    if (!watch.isValid())
        return 1;
    Heartbeat heartbeat;
    heartbeat.start();
    Results results;
    std::thread copier([&] {
        CopySession session { watch, &heartbeat, options, results, std::mt19937(1), 0, nullptr };
        measure(session);
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    app.exec();
    copier.join();
    printResults(options, results);
    return succeeded(results) ? 0 : 1;
}

int runApp(int argc, char *argv[], const Options &options)
{
    QTemporaryDir home;
    if (!home.isValid())
        return 1;
    provideRuntimeDir(home);
    QCoreApplication app(argc, argv);
    const QString dataHome = home.filePath(QStringLiteral("data"));
    const QString configHome = home.filePath(QStringLiteral("config"));
    const QString historyPath = dataHome + QStringLiteral("/Zettly");
    // Also makes the folder, which the watch needs before zettly starts.
    MeasureSupport::prefillHistory(
        historyPath, configHome + QStringLiteral("/Zettly/defaults.json"), options.history, options.entryChars);

    HistoryFileWatch watch(historyPath);
    if (!watch.isValid())
        return 1;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), dataHome);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome);
    QProcess zettly;
    zettly.setProcessEnvironment(environment);
    zettly.setProcessChannelMode(QProcess::ForwardedChannels);
    zettly.start(options.appPath, {});
    if (!zettly.waitForStarted()) {
        std::fprintf(stderr, "could not start %s\n", qPrintable(options.appPath));
        return 1;
    }
    const qint64 pid = zettly.processId();

    Results results;
    std::thread copier([&] {
        CopySession session { watch, nullptr, options, results, std::mt19937(1), 0, nullptr };
        if (options.bigMiB > 0) {
            measureBigCopy(session, pid);
            QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
            return;
        }
        measure(session);
        results.pssKiB = MeasureSupport::smapsKiB(pid, "Pss");
        results.rssKiB = MeasureSupport::smapsKiB(pid, "Rss");
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    app.exec();
    copier.join();
    results.appDied = zettly.state() != QProcess::Running;
    zettly.terminate();
    if (!zettly.waitForFinished(5000))
        zettly.kill();
    if (options.bigMiB > 0)
        return results.firstCopyMs && results.lostCopies == 0 ? 0 : 1;
    printResults(options, results);
    return succeeded(results) ? 0 : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    const std::optional<Options> options = parseOptions(argc, argv);
    if (!options) {
        std::fprintf(stderr,
            "usage: %s [--history N [--entry-chars N]] [--copies N] [--frozen N] [--app /path/to/zettly]\n"
            "       %s --big MiB --app /path/to/zettly\n",
            argv[0], argv[0]);
        return 2;
    }
    // It takes the clipboard dozens of times: never on someone's desktop.
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty() || display != qgetenv("ZETTLY_XVFB_DISPLAY")) {
        std::fprintf(stderr, "Run this through tests/x11/with-xvfb.sh, not on a desktop's display\n");
        return 2;
    }
    return options->appPath.isEmpty() ? runInProcess(argc, argv, *options) : runApp(argc, argv, *options);
}
