// SPDX-License-Identifier: GPL-3.0-or-later
#include "TestPrograms.h"

#include "OtherClient.h"
#include "RunningZettly.h"

#include <QCursor>

#include <gtest/gtest.h>

bool runProgram(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return eventually([&] { return process.state() == QProcess::NotRunning; })
        && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool useLayouts(const QString &layouts, const QString &variants)
{
    return runProgram(QStringLiteral("setxkbmap"),
        { QStringLiteral("-model"), QStringLiteral("pc105"), QStringLiteral("-layout"), layouts,
            QStringLiteral("-variant"), variants, QStringLiteral("-option"), {} });
}

std::optional<QRect> panelOf(const OtherClient &display, const QProcess &app)
{
    for (const QRect &window : display.visibleWindowsOf(app.processId())) {
        if (window.size() == QSize(360, 480))
            return window;
    }
    return std::nullopt;
}

void copyAsAnotherProgram(const QByteArray &text)
{
    XClip::copy(text);
}

void XClip::copy(const QByteArray &bytes, const QString &target)
{
    QStringList arguments { QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-i") };
    if (!target.isEmpty())
        arguments << QStringLiteral("-t") << target;
    QProcess xclip;
    // xclip forks a server that keeps the selection; the first process exits
    // once the selection is taken.
    xclip.start(QStringLiteral("xclip"), arguments);
    ASSERT_TRUE(xclip.waitForStarted());
    xclip.write(bytes);
    xclip.closeWriteChannel();
    ASSERT_TRUE(xclip.waitForFinished(patience));
    ASSERT_EQ(xclip.exitCode(), 0);
}

QByteArray XClip::paste(const QString &target)
{
    QProcess xclip;
    xclip.start(QStringLiteral("xclip"),
        { QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-o"), QStringLiteral("-t"),
            target });
    // The event loop keeps running: the owner may be this very process.
    if (!eventually([&] { return xclip.state() == QProcess::NotRunning; }) || xclip.exitCode() != 0)
        return {};
    return xclip.readAllStandardOutput();
}

bool XDoTool::key(const QStringList &keys)
{
    return runProgram(QStringLiteral("xdotool"), QStringList { QStringLiteral("key") } + keys);
}

bool XDoTool::pressShortcut()
{
    return key({ QStringLiteral("ctrl+super+v") });
}

bool XDoTool::type(const QString &text)
{
    return runProgram(
        QStringLiteral("xdotool"), { QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), text });
}

bool XDoTool::moveTo(QPoint position)
{
    return runProgram(QStringLiteral("xdotool"),
               { QStringLiteral("mousemove"), QString::number(position.x()), QString::number(position.y()) })
        && eventually([&] { return QCursor::pos() == position; });
}

bool XDoTool::click(QPoint position, int button)
{
    return moveTo(position)
        && runProgram(QStringLiteral("xdotool"), { QStringLiteral("click"), QString::number(button) });
}

TextTarget::~TextTarget()
{
    m_process.terminate();
    if (!m_process.waitForFinished(5000))
        m_process.kill();
}

bool TextTarget::start()
{
    m_process.start(QStringLiteral(ZETTLY_TEXT_TARGET_PATH), {});
    return m_process.waitForStarted() && waitForFocus();
}

bool TextTarget::waitForFocus()
{
    return eventually([&] {
        text();
        return m_focused;
    });
}

bool TextTarget::waitForText(const QString &text)
{
    return eventually([&] { return this->text() == text; });
}

QString TextTarget::text()
{
    while (m_process.canReadLine()) {
        const QList<QByteArray> words = m_process.readLine().trimmed().split(' ');
        if (words.value(0) == "focus")
            m_focused = words.value(1) == "1";
        else if (words.value(0) == "text")
            m_text = QString::fromUtf8(QByteArray::fromBase64(words.value(2)));
    }
    return m_text;
}
