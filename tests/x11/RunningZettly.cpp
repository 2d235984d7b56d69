// SPDX-License-Identifier: GPL-3.0-or-later
#include "RunningZettly.h"

#include "HistoryCodec.h"
#include "OtherClient.h"
#include "TestPrograms.h"

#include <QDir>
#include <QFile>

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
}

RunningZettly::~RunningZettly()
{
    for (QProcess *process : std::as_const(m_processes)) {
        process->terminate();
        if (!process->waitForFinished(5000))
            process->kill();
        delete process;
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
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    process->start(QStringLiteral(ZETTLY_APP_PATH), {});
    process->waitForStarted();
    return *process;
}

bool RunningZettly::waitUntilRecording()
{
    const int first = m_probes + 1;
    return QTest::qWaitFor(
        [&] {
            XClip::copy("prêt ? " + QByteArray::number(++m_probes));
            QTest::qWait(200);
            const QString newest = savedTexts().value(0);
            return newest.startsWith(QStringLiteral("prêt ? ")) && newest.mid(7).toInt() >= first;
        },
        15000);
}

QStringList RunningZettly::savedTexts() const
{
    QStringList texts;
    for (const ClipItem &item : HistoryCodec::decode(historyFile()).value_or(QList<ClipItem>()))
        texts.append(item.fullText.value_or(item.preview));
    return texts;
}

QByteArray RunningZettly::historyFile() const
{
    QFile file(m_home.filePath(QStringLiteral("data/Zettly/clips.json")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::optional<QRect> RunningZettly::panelOf(const OtherClient &display, const QProcess &app)
{
    for (const QRect &window : display.visibleWindowsOf(app.processId())) {
        if (window.size() == QSize(360, 480))
            return window;
    }
    return std::nullopt;
}

bool RunningZettly::waitForNewest(const QString &text) const
{
    return eventually([&] { return savedTexts().value(0) == text; });
}
