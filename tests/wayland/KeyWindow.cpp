// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyWindow.h"

#include <QTest>

KeyWindow::KeyWindow(const QString &appId)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(ZETTLY_KEY_WINDOW_PATH), { appId });
}

KeyWindow::~KeyWindow()
{
    close();
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
