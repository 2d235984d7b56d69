// SPDX-License-Identifier: GPL-3.0-or-later
#include "XDoTool.h"

#include <QCursor>
#include <QProcess>
#include <QTest>

namespace XDoTool {

static bool run(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    return QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 10'000)
        && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool key(const QStringList &keys)
{
    return run(QStringList { QStringLiteral("key") } + keys);
}

bool type(const QString &text)
{
    return run({ QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), text });
}

bool moveTo(QPoint position)
{
    return run({ QStringLiteral("mousemove"), QString::number(position.x()), QString::number(position.y()) })
        && QTest::qWaitFor([&] { return QCursor::pos() == position; }, 10'000);
}

bool click(QPoint position, int button)
{
    return moveTo(position) && run({ QStringLiteral("click"), QString::number(button) });
}

} // namespace XDoTool
