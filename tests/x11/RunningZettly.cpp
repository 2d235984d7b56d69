// SPDX-License-Identifier: GPL-3.0-or-later
#include "RunningZettly.h"

#include "HistoryCodec.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdio>

namespace {

// Long enough for a program starting on a busy machine.
constexpr int patience = 10'000;

} // namespace

RunningZettly::RunningZettly()
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    for (const char *folder : { "data", "config", "runtime" })
        QDir(m_home.path()).mkdir(QString::fromLatin1(folder));
    QFile::setPermissions(m_home.filePath(QStringLiteral("runtime")),
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    m_environment.insert(QStringLiteral("XDG_DATA_HOME"), m_home.filePath(QStringLiteral("data")));
    m_environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.filePath(QStringLiteral("config")));
    m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.filePath(QStringLiteral("runtime")));
    m_environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("zettly.clipboard.debug=true"));
}

RunningZettly::~RunningZettly()
{
    for (QProcess *process : std::as_const(m_processes)) {
        process->terminate();
        if (!process->waitForFinished(5000))
            process->kill();
        delete process;
    }
    if (::testing::Test::HasFailure()) {
        QFile log(m_home.filePath(QStringLiteral("zettly.log")));
        if (log.open(QIODevice::ReadOnly))
            std::fprintf(stderr, "zettly's log:\n%s", log.readAll().constData());
    }
}

bool RunningZettly::writeSettings(const QByteArray &json)
{
    QDir config(m_home.filePath(QStringLiteral("config")));
    QFile file(config.filePath(QStringLiteral("Zettly/defaults.json")));
    return config.mkpath(QStringLiteral("Zettly")) && file.open(QIODevice::WriteOnly)
        && file.write(json) == json.size();
}

QProcess &RunningZettly::start()
{
    auto *process = new QProcess;
    m_processes.append(process);
    process->setProcessEnvironment(m_environment);
    process->setProcessChannelMode(QProcess::ForwardedOutputChannel);
    process->setStandardErrorFile(m_home.filePath(QStringLiteral("zettly.log")), QIODevice::Append);
    process->start(QStringLiteral(ZETTLY_APP_PATH), {});
    process->waitForStarted();
    return *process;
}

std::pair<int, QByteArray> RunningZettly::run(const QStringList &arguments, const QStringList &unset) const
{
    QProcessEnvironment environment = m_environment;
    for (const QString &name : unset)
        environment.remove(name);
    QProcess command;
    command.setProcessEnvironment(environment);
    command.start(QStringLiteral(ZETTLY_APP_PATH), arguments);
    const bool ended = command.waitForFinished(patience);
    return { ended ? command.exitCode() : -1, command.readAllStandardError().trimmed() };
}

bool RunningZettly::waitUntilRecording()
{
    const int first = m_probes + 1;
    const auto landed = [&] {
        const QString newest = savedTexts().value(0);
        return newest.startsWith(QStringLiteral("prêt ? ")) && newest.mid(7).toInt() >= first;
    };
    return QTest::qWaitFor(
        [&] {
            copyAsAnotherProgram("prêt ? " + QByteArray::number(++m_probes));
            return QTest::qWaitFor(landed, 300);
        },
        20'000);
}

QList<ClipItem> RunningZettly::savedItems() const
{
    return HistoryCodec::decode(historyFile()).value_or(QList<ClipItem>());
}

QStringList RunningZettly::savedTexts() const
{
    QStringList texts;
    for (const ClipItem &item : savedItems())
        texts.append(item.fullText.value_or(item.preview));
    return texts;
}

QByteArray RunningZettly::historyFile() const
{
    QFile file(m_home.filePath(QStringLiteral("data/Zettly/clips.json")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool RunningZettly::waitForNewest(const QString &text) const
{
    return QTest::qWaitFor([&] { return savedTexts().value(0) == text; }, patience);
}

bool RunningZettly::waitForLog(const QByteArray &text) const
{
    return QTest::qWaitFor(
        [&] {
            QFile log(m_home.filePath(QStringLiteral("zettly.log")));
            return log.open(QIODevice::ReadOnly) && log.readAll().contains(text);
        },
        5000);
}
