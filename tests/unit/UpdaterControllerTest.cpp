// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdaterController.h"
#include "AppcastFeed.h"
#include "LocalFeedServer.h"
#include "UpdateChecker.h"
#include "UpdateDialog.h"

#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>

namespace {

// Stands in for the browser.
class UrlCatcher : public QObject {
    Q_OBJECT

public:
    UrlCatcher() { QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open"); }
    ~UrlCatcher() override { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }

    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl &url) { opened.append(url); }
};

QPushButton *button(const UpdateDialog &dialog, const QString &text)
{
    const QList<QPushButton *> buttons = dialog.findChildren<QPushButton *>();
    const auto found = std::find_if(buttons.begin(), buttons.end(), [&](auto *b) { return b->text() == text; });
    return found == buttons.end() ? nullptr : *found;
}

QString labels(const UpdateDialog &dialog)
{
    QStringList texts;
    for (const QLabel *label : dialog.findChildren<QLabel *>())
        texts.append(label->text());
    return texts.join(u'\n');
}

const QByteArray newerFeed = appcastFeed(appcastItem("12", "2.0", "https://example.com/zettly-2.0.deb"));
const QByteArray sameFeed = appcastFeed(appcastItem("5", "1.0", "https://example.com/a"));

} // namespace

// One controller throughout, as in the app: its dialog is reused.
TEST(UpdaterController, UserCheckShowsTheSearchThenItsOutcome)
{
    LocalFeedServer server;
    UrlCatcher browser;
    UpdaterController controller(server.url(QStringLiteral("/appcast.xml")), QStringLiteral("5"), QStringLiteral("1.0"),
        UpdaterController::AutomaticChecks::Off);
    auto *checker = controller.findChild<UpdateChecker *>();
    QSignalSpy found(checker, &UpdateChecker::updateFound);
    QSignalSpy none(checker, &UpdateChecker::noUpdateFound);
    QSignalSpy failed(checker, &UpdateChecker::checkFailed);
    using State = UpdateDialog::State;
    struct Case {
        const char *name;
        int status;
        QByteArray feed;
        // Checking: "Annuler" at once, before any answer can arrive.
        State state;
        QString shown;
        QString choice;
        qsizetype opened;
    };
    const Case cases[] = {
        { "newer, later", 200, newerFeed, State::UpdateAvailable,
            QStringLiteral("Zettly 2.0 (build 12) est disponible. Tu utilises la version 1.0 (build 5)."),
            QStringLiteral("Plus tard"), 0 },
        { "newer, download", 200, newerFeed, State::UpdateAvailable, QStringLiteral("2.0 (build 12)"),
            QStringLiteral("Télécharger"), 1 },
        { "up to date", 200, sameFeed, State::UpToDate, QStringLiteral("1.0 (build 5)"), QStringLiteral("OK"), 1 },
        { "failed", 404, newerFeed, State::Failed, QStringLiteral("HTTP 404"), QStringLiteral("OK"), 1 },
        { "cancelled, newer", 200, newerFeed, State::Checking, {}, {}, 1 },
        { "cancelled, failed", 404, newerFeed, State::Checking, {}, {}, 1 },
    };
    for (const Case &c : cases) {
        server.answer("/appcast.xml", c.status, c.feed);
        const qsizetype ended = found.size() + none.size() + failed.size();
        controller.checkForUpdates();
        UpdateDialog *dialog = controller.dialog();
        ASSERT_TRUE(dialog && dialog->isVisible() && dialog->state() == State::Checking) << c.name;
        if (c.state == State::Checking)
            button(*dialog, QStringLiteral("Annuler"))->click();
        ASSERT_TRUE(QTest::qWaitFor([&] { return found.size() + none.size() + failed.size() > ended; }, 30000))
            << c.name;
        EXPECT_EQ(dialog->state(), c.state) << c.name;
        EXPECT_EQ(dialog->isVisible(), c.state != State::Checking) << c.name;
        if (c.state == State::Checking)
            continue;
        EXPECT_TRUE(labels(*dialog).contains(c.shown)) << c.name << ": " << labels(*dialog).toStdString();
        EXPECT_EQ(dialog->findChildren<QPushButton *>().size(), c.state == State::UpdateAvailable ? 2 : 1) << c.name;
        QPushButton *chosen = button(*dialog, c.choice);
        ASSERT_TRUE(chosen) << c.name;
        chosen->click();
        EXPECT_FALSE(dialog->isVisible()) << c.name;
        EXPECT_EQ(browser.opened.size(), c.opened) << c.name;
    }
    EXPECT_EQ(browser.opened, QList<QUrl> { QUrl(QStringLiteral("https://example.com/zettly-2.0.deb")) });
}

TEST(UpdaterController, AutomaticCheckOffersOnlyANewerRelease)
{
    LocalFeedServer server;
    server.answer("/newer.xml", 200, newerFeed);
    server.answer("/same.xml", 200, sameFeed);
    // Side by side: each waits a few seconds before its first check.
    const auto automatic = [&](const char *path) {
        return std::make_unique<UpdaterController>(server.url(QString::fromLatin1(path)), QStringLiteral("5"),
            QStringLiteral("1.0"), UpdaterController::AutomaticChecks::On);
    };
    const auto same = automatic("/same.xml");
    const auto missing = automatic("/missing.xml");
    const auto newer = automatic("/newer.xml");
    QSignalSpy none(same->findChild<UpdateChecker *>(), &UpdateChecker::noUpdateFound);
    QSignalSpy failed(missing->findChild<UpdateChecker *>(), &UpdateChecker::checkFailed);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return !none.isEmpty() && !failed.isEmpty() && newer->dialog() && newer->dialog()->isVisible(); },
        30000));
    EXPECT_EQ(newer->dialog()->state(), UpdateDialog::State::UpdateAvailable);
    QCoreApplication::processEvents();
    EXPECT_FALSE(same->dialog());
    EXPECT_FALSE(missing->dialog());
}

#include "UpdaterControllerTest.moc"
