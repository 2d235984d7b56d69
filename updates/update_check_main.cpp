// SPDX-License-Identifier: GPL-3.0-or-later
// zettly-update-check <feed address> <running version>: checks the feed once
// and prints the outcome for UpdateCheckProcess.
#include "UpdateChecker.h"
#include "UpdateCheckProcess.h"

#include <QCoreApplication>
#include <QUrl>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("usage: zettly-update-check <feed address> <running version>\n", stderr);
        return 2;
    }
    UpdateChecker checker(QUrl::fromEncoded(arguments.at(1).toUtf8()), arguments.at(2));
    const auto print = [](const QByteArray &outcome) {
        std::fwrite(outcome.constData(), 1, size_t(outcome.size()), stdout);
        QCoreApplication::quit();
    };
    QObject::connect(&checker, &UpdateCheck::updateFound,
        [&](const AppcastRelease &release) { print(UpdateCheckProcess::describeUpdate(release)); });
    QObject::connect(&checker, &UpdateCheck::noUpdateFound, [&] { print(UpdateCheckProcess::describeNoUpdate()); });
    QObject::connect(&checker, &UpdateCheck::checkFailed, [&](UpdateCheck::Failure failure, const QString &reason) {
        print(UpdateCheckProcess::describeFailure(failure, reason));
    });
    checker.check();
    return app.exec();
}
