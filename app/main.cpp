// SPDX-License-Identifier: GPL-3.0-or-later
#include "InstanceChannel.h"
#include "SessionBackends.h"
#include "TerminationSignals.h"
#include "Workspace.h"
#include "X11Display.h"
#include "ZettlyAppDelegate.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>

#include <cstdio>
#include <optional>

namespace {

void printLine(FILE *stream, const QString &line)
{
    std::fputs(qUtf8Printable(line + u'\n'), stream);
}

// Handles the options that end the process at once: help, version, and a
// command for the running copy. Nothing when Zettly itself is to start.
std::optional<int> runCommandLine(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (arguments.size() <= 1)
        return std::nullopt;

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Historique du presse-papiers."));
    const QCommandLineOption help(
        { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Affiche cette aide."));
    const QCommandLineOption version(
        { QStringLiteral("v"), QStringLiteral("version") }, QStringLiteral("Affiche la version."));
    parser.addOption(help);
    parser.addOption(version);
    const struct {
        QCommandLineOption option;
        InstanceChannel::Command command;
    } commands[] = {
        { QCommandLineOption(
              QStringLiteral("toggle"), QStringLiteral("Ouvre ou ferme le sélecteur de Zettly en cours.")),
            InstanceChannel::Command::Toggle },
        { QCommandLineOption(QStringLiteral("show"), QStringLiteral("Ouvre le sélecteur de Zettly en cours.")),
            InstanceChannel::Command::Show },
        { QCommandLineOption(QStringLiteral("hide"), QStringLiteral("Ferme le sélecteur de Zettly en cours.")),
            InstanceChannel::Command::Hide },
    };
    for (const auto &entry : commands)
        parser.addOption(entry.option);
    if (!parser.parse(arguments)) {
        printLine(stderr, QStringLiteral("zettly : ") + parser.errorText());
        return 1;
    }

    std::optional<InstanceChannel::Command> command;
    for (const auto &entry : commands) {
        if (!parser.isSet(entry.option))
            continue;
        if (command) {
            printLine(stderr, QStringLiteral("zettly : --toggle, --show et --hide s'excluent."));
            return 1;
        }
        command = entry.command;
    }
    if (parser.isSet(help)) {
        // Qt's own words, without an application object to name the program.
        printLine(stdout,
            parser.helpText()
                .replace(QStringLiteral("Usage:"), QStringLiteral("Utilisation :"))
                .replace(QStringLiteral("<executable_name>"), QStringLiteral("zettly"))
                .replace(QStringLiteral("Options:"), QStringLiteral("Options :"))
                .trimmed());
        return 0;
    }
    if (parser.isSet(version)) {
        printLine(stdout, QStringLiteral("zettly " ZETTLY_VERSION));
        return 0;
    }
    if (!command)
        return std::nullopt;
    if (!InstanceChannel::send(*command)) {
        printLine(stderr, QStringLiteral("zettly : aucune copie de Zettly n'est en cours d'exécution."));
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    // A command for the running copy needs neither a display nor a window:
    // it is done before any of them, to be quick.
    if (const std::optional<int> exitCode = runCommandLine(argc, argv))
        return *exitCode;

    // Chosen here, not by the user's QT_QPA_PLATFORM: the backends are
    // picked to match, and our windows are native only where the compositor
    // also serves the clipboard and names the window in front.
    const QByteArray platform = sessionQtPlatform();
    qputenv("QT_QPA_PLATFORM", platform);
    if (platform == "xcb" && !X11Display::isReachable()) {
        std::fputs("zettly : aucun affichage X11 accessible (DISPLAY n'est pas défini ou le serveur ne répond pas) ; "
                   "Zettly s'ouvre dans une session de bureau X11.\n",
            stderr);
        return 1;
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zettly"));
    QApplication::setApplicationVersion(QStringLiteral(ZETTLY_VERSION));
    QApplication::setDesktopFileName(Workspace::ownIdentifier);
    // Qt's own fallback, hicolor, has almost none of the icons the windows
    // name; the user's theme still comes first. Before any icon is looked up:
    // the first look-up fixes the themes.
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
    // A tray app: closing the preferences must not end it.
    QApplication::setQuitOnLastWindowClosed(false);

    // Made before the delegate, so that it outlives the saves the delegate's
    // end finishes.
    const TerminationSignals termination;
    ZettlyAppDelegate delegate;
    if (!delegate.applicationDidFinishLaunching())
        return 0;
    return app.exec();
}
