// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdaterController.h"
#include "UpdateCheck.h"
#include "UpdateDialog.h"

#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Only counts its starts: the test reports each outcome itself, when it
// chooses, by emitting the signal.
class ScriptedUpdateCheck : public UpdateCheck {
public:
    void check() override { ++m_started; }
    int started() const { return m_started; }

private:
    int m_started = 0;
};

// Stands in for the browser.
class UrlCatcher : public QObject {
    Q_OBJECT

public:
    UrlCatcher() { QDesktopServices::setUrlHandler(u"https"_s, this, "open"); }
    ~UrlCatcher() override { QDesktopServices::unsetUrlHandler(u"https"_s); }

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

const AppcastRelease newer { u"12"_s, u"2.0"_s, QUrl(u"https://example.com/zettly-2.0.deb"_s) };

using Outcome = std::function<void(UpdateCheck &)>;
const Outcome foundNewer = [](UpdateCheck &check) { Q_EMIT check.updateFound(newer); };
const Outcome upToDate = [](UpdateCheck &check) { Q_EMIT check.noUpdateFound(); };
const Outcome failed
    = [](UpdateCheck &check) { Q_EMIT check.checkFailed(UpdateCheck::Failure::HttpError, u"Erreur HTTP 404."_s); };

} // namespace

// One controller throughout, as in the app: its dialog is reused.
TEST(UpdaterController, UserCheckShowsTheSearchThenItsOutcome)
{
    UrlCatcher browser;
    auto *check = new ScriptedUpdateCheck;
    UpdaterController controller(check, u"5"_s, u"1.0"_s, UpdaterController::AutomaticChecks::Off);
    using State = UpdateDialog::State;
    struct Case {
        const char *name;
        Outcome outcome;
        // Checking: "Annuler" at once, before the outcome.
        State state;
        QString shown;
        QString choice;
        qsizetype opened;
    };
    const Case cases[] = {
        { "newer, later", foundNewer, State::UpdateAvailable,
            u"Zettly 2.0 (build 12) est disponible. Tu utilises la version 1.0 (build 5)."_s, u"Plus tard"_s, 0 },
        { "newer, download", foundNewer, State::UpdateAvailable, u"2.0 (build 12)"_s, u"Télécharger"_s, 1 },
        { "up to date", upToDate, State::UpToDate, u"1.0 (build 5)"_s, u"OK"_s, 1 },
        { "failed", failed, State::Failed, u"Erreur HTTP 404."_s, u"OK"_s, 1 },
        { "cancelled, newer", foundNewer, State::Checking, {}, {}, 1 },
        { "cancelled, failed", failed, State::Checking, {}, {}, 1 },
    };
    int started = 0;
    for (const Case &c : cases) {
        controller.checkForUpdates();
        EXPECT_EQ(check->started(), ++started) << c.name;
        UpdateDialog *dialog = controller.dialog();
        ASSERT_TRUE(dialog && dialog->isVisible() && dialog->state() == State::Checking) << c.name;
        if (c.state == State::Checking)
            button(*dialog, u"Annuler"_s)->click();
        c.outcome(*check);
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
    EXPECT_EQ(browser.opened, QList<QUrl> { newer.downloadUrl });
}

// Automatic checks run only when the build has them, and show a dialog only
// for a newer release, without taking the keyboard.
TEST(UpdaterController, AutomaticCheckOffersOnlyANewerRelease)
{
    struct Case {
        const char *name;
        UpdaterController::AutomaticChecks automatic;
        Outcome outcome;
        bool offered;
    };
    const Case cases[] = {
        { "newer", UpdaterController::AutomaticChecks::On, foundNewer, true },
        { "up to date", UpdaterController::AutomaticChecks::On, upToDate, false },
        { "failed", UpdaterController::AutomaticChecks::On, failed, false },
        { "off", UpdaterController::AutomaticChecks::Off, foundNewer, false },
    };
    for (const Case &c : cases) {
        auto *check = new ScriptedUpdateCheck;
        UpdaterController controller(check, u"5"_s, u"1.0"_s, c.automatic);
        controller.startAutomaticChecks(0ms);
        // A zero timer has run once the posted events are handled.
        QCoreApplication::processEvents();
        const bool on = c.automatic == UpdaterController::AutomaticChecks::On;
        ASSERT_EQ(check->started(), on ? 1 : 0) << c.name;
        c.outcome(*check);
        ASSERT_EQ(controller.dialog() != nullptr, c.offered) << c.name;
        if (c.offered) {
            EXPECT_TRUE(controller.dialog()->isVisible()) << c.name;
            EXPECT_TRUE(controller.dialog()->testAttribute(Qt::WA_ShowWithoutActivating)) << c.name;
            EXPECT_EQ(controller.dialog()->state(), UpdateDialog::State::UpdateAvailable) << c.name;
        }
    }
}

#include "UpdaterControllerTest.moc"
