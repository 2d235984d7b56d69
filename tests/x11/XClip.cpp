// SPDX-License-Identifier: GPL-3.0-or-later
#include "XClip.h"

#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

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
    ASSERT_TRUE(xclip.waitForFinished(10000));
    ASSERT_EQ(xclip.exitCode(), 0);
}

QByteArray XClip::paste(const QString &target)
{
    QProcess xclip;
    xclip.start(QStringLiteral("xclip"),
        { QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-o"), QStringLiteral("-t"),
            target });
    // The event loop keeps running: the owner may be this very process.
    if (!QTest::qWaitFor([&] { return xclip.state() == QProcess::NotRunning; }, 10000) || xclip.exitCode() != 0)
        return {};
    return xclip.readAllStandardOutput();
}
