// SPDX-License-Identifier: GPL-3.0-or-later
// How soon a paste from the picker lands in the window the user was in: from
// the Return key's press (through XTest) to the text window of another
// process holding the pasted text, the 0.15 s wait before the paste
// shortcut included. Prints figures, asserts nothing.
//
//   paste_latency --app /path/to/zettly --target /path/to/zettly_text_target
//                 [--history N] [--pastes N]
//
// Run under a window manager on an X server of its own (scripts or
// tests/x11/with-xvfb.sh --wm): it presses keys. The text window reports each
// change with the monotonic clock's time, which this process reads too.
#include "MeasureSupport.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

namespace {

using Clock = std::chrono::steady_clock;

struct FreeReply {
    void operator()(void *reply) const { std::free(reply); }
};
template<typename T> using Reply = std::unique_ptr<T, FreeReply>;

constexpr int patienceMilliseconds = 10'000;
constexpr int retryMilliseconds = 1'000;
// Xvfb's evdev key code of Return.
constexpr xcb_keycode_t returnKey = 36;

struct Options {
    QString appPath;
    QString targetPath;
    qint64 history = 2000;
    int pastes = 20;
};

qint64 nowMilliseconds()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch()).count();
}

bool waitFor(const std::function<bool()> &done, int milliseconds = patienceMilliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

// The text window's reports: its focus, and its text's length with the time
// of the last change.
class TextWindow {
public:
    explicit TextWindow(const QString &path)
    {
        m_process.start(path, {});
        m_process.waitForStarted();
    }
    ~TextWindow()
    {
        m_process.terminate();
        m_process.waitForFinished(5000);
    }
    bool isFocused()
    {
        read();
        return m_focused;
    }
    qsizetype length()
    {
        read();
        return m_length;
    }
    qint64 changedAt() const { return m_changedAt; }

private:
    void read()
    {
        while (m_process.canReadLine()) {
            const QList<QByteArray> words = m_process.readLine().trimmed().split(' ');
            if (words.value(0) == "focus") {
                m_focused = words.value(1) == "1";
            } else if (words.value(0) == "text") {
                m_changedAt = words.value(1).toLongLong();
                m_length = QByteArray::fromBase64(words.value(2)).size();
            }
        }
    }

    QProcess m_process;
    bool m_focused = false;
    qsizetype m_length = 0;
    qint64 m_changedAt = 0;
};

class Display {
public:
    Display()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        const Reply<xcb_intern_atom_reply_t> atom(
            xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, false, 11, "_NET_WM_PID"), nullptr));
        m_pidAtom = atom ? atom->atom : xcb_atom_t(XCB_ATOM_NONE);
    }
    ~Display() { xcb_disconnect(m_connection); }
    bool isValid() const { return !xcb_connection_has_error(m_connection); }

    // The process whose window has the keyboard focus.
    qint64 focusedProcess() const
    {
        const Reply<xcb_get_input_focus_reply_t> focus(
            xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
        if (!focus)
            return 0;
        const Reply<xcb_get_property_reply_t> pid(xcb_get_property_reply(m_connection,
            xcb_get_property(m_connection, false, focus->focus, m_pidAtom, XCB_ATOM_CARDINAL, 0, 1), nullptr));
        if (!pid || xcb_get_property_value_length(pid.get()) != 4)
            return 0;
        return *static_cast<const uint32_t *>(xcb_get_property_value(pid.get()));
    }

    // Presses and releases Return; gives the time of the press.
    qint64 pressReturn()
    {
        xcb_test_fake_input(m_connection, XCB_KEY_PRESS, returnKey, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
        xcb_flush(m_connection);
        const qint64 pressedAt = nowMilliseconds();
        xcb_test_fake_input(m_connection, XCB_KEY_RELEASE, returnKey, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
        xcb_flush(m_connection);
        return pressedAt;
    }

private:
    xcb_connection_t *m_connection;
    xcb_atom_t m_pidAtom = XCB_ATOM_NONE;
};

bool xdotool(const QStringList &arguments)
{
    return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

int run(const Options &options)
{
    QTemporaryDir home;
    Display display;
    if (!home.isValid() || !display.isValid())
        return 1;
    MeasureSupport::prefillHistory(home.filePath(QStringLiteral("data/Zettly")),
        home.filePath(QStringLiteral("config/Zettly/defaults.json")), options.history);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString runtime = home.filePath(QStringLiteral("runtime"));
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);

    QProcess zettly;
    zettly.setProcessEnvironment(environment);
    zettly.setProcessChannelMode(QProcess::ForwardedChannels);
    zettly.start(options.appPath, {});
    TextWindow target(options.targetPath);
    if (!zettly.waitForStarted() || !waitFor([&] { return target.isFocused(); })) {
        std::fprintf(stderr, "paste_latency: zettly or the text window did not start\n");
        return 1;
    }
    std::printf("%lld entries in the history, %d pastes of the newest (about 200 characters)\n",
        static_cast<long long>(options.history), options.pastes);
    std::printf("paste   Return to text in the window\n");

    QList<double> latencies;
    for (int paste = 1; paste <= options.pastes; ++paste) {
        const qsizetype before = target.length();
        // The shortcut is retried: the first press may come before zettly
        // holds its grab.
        const bool opened = waitFor([&] {
            if (display.focusedProcess() == zettly.processId())
                return true;
            xdotool({ QStringLiteral("mousemove"), QStringLiteral("700"), QStringLiteral("150"), QStringLiteral("key"),
                QStringLiteral("ctrl+super+v") });
            return waitFor([&] { return display.focusedProcess() == zettly.processId(); }, retryMilliseconds);
        });
        if (!opened) {
            std::printf("FAILED: the panel did not take the focus\n");
            return 1;
        }
        const qint64 pressedAt = display.pressReturn();
        if (!waitFor([&] { return target.length() > before; })) {
            std::printf("%5d   MISSING\n", paste);
            continue;
        }
        const double latency = double(target.changedAt() - pressedAt);
        latencies.append(latency);
        std::printf("%5d   %s\n", paste, qPrintable(MeasureSupport::figure(latency)));
        // The focus is back in the text window before the next showing.
        waitFor([&] { return display.focusedProcess() != zettly.processId(); });
    }
    zettly.terminate();
    zettly.waitForFinished(5000);
    if (latencies.isEmpty())
        return 1;
    std::printf(
        "Return to pasted text: %s (the paste shortcut waits 150 ms)\n", qPrintable(MeasureSupport::spread(latencies)));
    return latencies.size() == options.pastes ? 0 : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    Options options;
    QStringList arguments = app.arguments().mid(1);
    // --target is this tool's own; the rest is the measuring tools' usual.
    if (const qsizetype at = arguments.indexOf(QStringLiteral("--target")); at >= 0 && at + 1 < arguments.size()) {
        options.targetPath = arguments.at(at + 1);
        arguments.remove(at, 2);
    }
    QList<QByteArray> rest { QByteArray(argv[0]) };
    for (const QString &argument : std::as_const(arguments))
        rest.append(argument.toLocal8Bit());
    QList<char *> pointers;
    for (QByteArray &argument : rest)
        pointers.append(argument.data());
    const auto line = MeasureSupport::parseCommandLine(
        int(pointers.size()), pointers.data(), { QStringLiteral("history"), QStringLiteral("pastes") });
    if (!line || line->appPath.isEmpty() || options.targetPath.isEmpty()) {
        std::fprintf(stderr,
            "usage: %s --app /path/to/zettly --target /path/to/zettly_text_target [--history N] [--pastes N]\n",
            argv[0]);
        return 2;
    }
    options.appPath = line->appPath;
    options.history = line->counts.value(QStringLiteral("history"), options.history);
    options.pastes = int(line->counts.value(QStringLiteral("pastes"), options.pastes));
    return run(options);
}
