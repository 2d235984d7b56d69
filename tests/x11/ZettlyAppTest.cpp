// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryCodec.h"
#include "XClip.h"

#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// The texts of the history as zettly saved it, newest first. Read without a
// store: opening one would tidy the folder under the running app's feet.
QStringList savedTexts(const QString &dataHome)
{
    QFile file(dataHome + QStringLiteral("/Zettly/clips.json"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList texts;
    for (const ClipItem &item : HistoryCodec::decode(file.readAll()).value_or(QList<ClipItem>()))
        texts.append(item.fullText.value_or(item.preview));
    return texts;
}

} // namespace

// The real executable, started as a user would, records what another program
// copies.
TEST(ZettlyApp, RecordsCopiesFromLaunch)
{
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    QProcess zettly;
    zettly.setProcessEnvironment(environment);
    zettly.setProcessChannelMode(QProcess::ForwardedChannels);
    zettly.start(QStringLiteral(ZETTLY_APP_PATH), {});
    ASSERT_TRUE(zettly.waitForStarted());

    // What is on the clipboard before zettly watches it is never recorded,
    // so copy until a copy lands: then zettly is watching.
    const QString dataHome = home.filePath(QStringLiteral("data"));
    int attempt = 0;
    const bool recorded = QTest::qWaitFor(
        [&] {
            XClip::copy("au démarrage " + QByteArray::number(++attempt));
            QTest::qWait(200);
            return !savedTexts(dataHome).isEmpty();
        },
        15000);
    ASSERT_TRUE(recorded);

    XClip::copy("deuxième copie\navec une ligne de plus");
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return savedTexts(dataHome).value(0) == QStringLiteral("deuxième copie\navec une ligne de plus"); },
        5000));
    EXPECT_EQ(zettly.state(), QProcess::Running);
    zettly.terminate();
    zettly.waitForFinished(5000);
}
