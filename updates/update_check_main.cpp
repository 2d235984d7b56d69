// SPDX-License-Identifier: GPL-3.0-or-later
// zettly-update-check [--ca-certificates FILE] <feed address> <running version>:
// checks the feed once and prints the outcome for UpdateCheckProcess.
#include "UpdateChecker.h"
#include "UpdateCheckProcess.h"

#include <QCoreApplication>
#include <QSslCertificate>
#include <QUrl>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    QList<QSslCertificate> extraCaCertificates;
    if (arguments.size() == 4 && arguments.at(0) == u"--ca-certificates") {
        extraCaCertificates = QSslCertificate::fromPath(arguments.at(1));
        // A file that names no certificate is a mistake, not "trust nothing more".
        if (extraCaCertificates.isEmpty()) {
            std::fputs("zettly-update-check: no certificate in the --ca-certificates file\n", stderr);
            return 2;
        }
        arguments = arguments.mid(2);
    }
    if (arguments.size() != 2) {
        std::fputs("usage: zettly-update-check [--ca-certificates FILE] <feed address> <running version>\n", stderr);
        return 2;
    }
    UpdateChecker checker(QUrl::fromEncoded(arguments.at(0).toUtf8()), arguments.at(1));
    checker.setExtraCaCertificates(extraCaCertificates);
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
