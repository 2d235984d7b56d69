// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandPrograms.h"

#include "RunningZettly.h"

#include <QTest>

bool WlClipboard::copy(const QByteArray &bytes, const QString &type)
{
    QProcess process;
    process.start(QStringLiteral("wl-copy"), { QStringLiteral("--type"), type });
    process.write(bytes);
    process.closeWriteChannel();
    // wl-copy goes on serving in a child of its own once it owns the
    // selection.
    return process.waitForFinished(10000) && process.exitCode() == 0;
}

std::optional<QByteArray> WlClipboard::paste(const QString &type)
{
    QProcess process;
    process.start(QStringLiteral("wl-paste"), { QStringLiteral("--no-newline"), QStringLiteral("--type"), type });
    if (!process.waitForFinished(10000) || process.exitCode() != 0)
        return std::nullopt;
    return process.readAllStandardOutput();
}

void copyAsAnotherProgram(const QByteArray &text)
{
    WlClipboard::copy(text);
}

bool waitForFront(const Workspace &workspace, const std::optional<QString> &identifier)
{
    return QTest::qWaitFor(
        [&] {
            const std::optional<RunningApp> front = workspace.frontmostApp();
            return identifier ? front && front->identifier == identifier : !front;
        },
        10000);
}

KeyWindow::KeyWindow(const QString &appId)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(ZETTLY_KEY_WINDOW_PATH), { appId });
}

bool KeyWindow::waitForLine(const QByteArray &line)
{
    return QTest::qWaitFor(
        [&] {
            m_output += m_process.readAllStandardOutput();
            return m_output.split('\n').contains(line);
        },
        5000);
}

void KeyWindow::close()
{
    m_process.terminate();
    m_process.waitForFinished(5000);
}

bool StuckSource::start()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(ZETTLY_STUCK_SOURCE_PATH), {});
    return QTest::qWaitFor([&] { return m_process.canReadLine() && m_process.readLine() == "ready\n"; }, 5000);
}

StuckSource::~StuckSource()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished(5000);
}
