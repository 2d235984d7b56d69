// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateChecker.h"
#include "AppcastFeed.h"
#include "LocalFeedServer.h"
#include "UpdateCheckProcess.h"

#include <QSignalSpy>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

struct Outcomes {
    explicit Outcomes(UpdateCheck &checker)
        : found(&checker, &UpdateCheck::updateFound)
        , none(&checker, &UpdateCheck::noUpdateFound)
        , failed(&checker, &UpdateCheck::checkFailed)
    {
    }
    qsizetype count() const { return found.size() + none.size() + failed.size(); }
    bool wait() const
    {
        return QTest::qWaitFor([this] { return count() > 0; }, 30000);
    }

    QSignalSpy found;
    QSignalSpy none;
    QSignalSpy failed;
};

const QByteArray newerFeed = appcastFeed(appcastItem("4", "1.4", "https://example.com/zettly-1.4.deb")
    + appcastItem("12", "2.0", "https://example.com/zettly-2.0.deb")
    + appcastItem("6", "1.6", "https://example.com/zettly-1.6.deb"));

using F = UpdateCheck::Failure;

// Runs one check and compares its one report: newerFeed's newest release
// when found, else the failure with its reason, else "no update".
void expectOutcome(UpdateCheck &check, bool found, std::optional<F> failure)
{
    const Outcomes outcomes(check);
    check.check();
    ASSERT_TRUE(outcomes.wait());
    // A second report would already be queued.
    QCoreApplication::processEvents();
    ASSERT_EQ(outcomes.count(), 1);
    EXPECT_EQ(outcomes.none.size(), found || failure ? 0 : 1);
    if (found) {
        ASSERT_EQ(outcomes.found.size(), 1);
        EXPECT_EQ(outcomes.found[0][0].value<AppcastRelease>(),
            (AppcastRelease { u"12"_s, u"2.0"_s, QUrl(u"https://example.com/zettly-2.0.deb"_s) }));
    }
    if (failure) {
        ASSERT_EQ(outcomes.failed.size(), 1);
        EXPECT_EQ(outcomes.failed[0][0].value<F>(), *failure);
        EXPECT_FALSE(outcomes.failed[0][1].toString().isEmpty());
    }
}

} // namespace

TEST(UpdateChecker, ReportsNewerSameOlderAndEveryFailure)
{
    LocalFeedServer server;
    server.answer("/newer.xml", 200, newerFeed);
    server.answer("/same.xml", 200, appcastFeed(appcastItem("5.0", "1.5", "https://example.com/a")));
    server.answer("/html.xml", 200, "<html><body>Bienvenue</body></html>");
    server.answer("/huge.xml", 200,
        appcastFeed(appcastItem("12", "2.0", "https://example.com/a")) + "<!--"
            + QByteArray(UpdateChecker::maximumFeedSize, 'x') + "-->");
    server.answer("/closed.xml", LocalFeedServer::closeUnanswered);
    server.answer("/silent.xml", LocalFeedServer::neverAnswer);
    server.redirect("/moved.xml", "/moved-again.xml");
    server.redirect("/moved-again.xml", server.url(u"/newer.xml"_s).toEncoded());
    server.redirect("/to-http.xml", server.url(u"/newer.xml"_s, u"http"_s).toEncoded());
    server.redirect("/loop.xml", "/loop.xml");
    server.answer("/http-download.xml", 200, appcastFeed(appcastItem("12", "2.0", "http://example.com/zettly.deb")));

    struct Case {
        const char *name;
        QUrl url;
        bool found;
        std::optional<F> failure;
        bool trusted = true;
    };
    const Case cases[] = {
        { "newest item is newer", server.url(u"/newer.xml"_s), true, {} },
        { "same version", server.url(u"/same.xml"_s), false, {} },
        { "redirects on the same server", server.url(u"/moved.xml"_s), true, {} },
        { "redirect to plain http", server.url(u"/to-http.xml"_s), false, F::BadAddress },
        { "download over plain http", server.url(u"/http-download.xml"_s), false, F::InvalidFeed },
        { "feed over plain http", server.url(u"/newer.xml"_s, u"http"_s), false, F::BadAddress },
        { "endless redirects", server.url(u"/loop.xml"_s), false, F::HttpError },
        { "not found", server.url(u"/missing.xml"_s), false, F::HttpError },
        { "closed unanswered", server.url(u"/closed.xml"_s), false, F::Unreachable },
        { "never answers", server.url(u"/silent.xml"_s), false, F::Unreachable },
        { "nothing listening", LocalFeedServer::deadUrl(), false, F::Unreachable },
        { "a web page", server.url(u"/html.xml"_s), false, F::InvalidFeed },
        { "larger than allowed", server.url(u"/huge.xml"_s), false, F::InvalidFeed },
        { "ftp", QUrl(u"ftp://127.0.0.1/appcast.xml"_s), false, F::BadAddress },
        { "certificate nobody vouches for", server.url(u"/newer.xml"_s), false, F::Unreachable, false },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        UpdateChecker checker(c.url, u"5"_s);
        checker.setTimeout(2s);
        if (c.trusted)
            checker.setExtraCaCertificates(LocalFeedServer::caCertificates());
        expectOutcome(checker, c.found, c.failure);
        EXPECT_FALSE(checker.isChecking());
    }
}

TEST(UpdateChecker, OneCheckAtATimeThenAgain)
{
    LocalFeedServer server;
    server.answer("/appcast.xml", 200, newerFeed);
    UpdateChecker checker(server.url(u"/appcast.xml"_s), u"5"_s);
    checker.setExtraCaCertificates(LocalFeedServer::caCertificates());
    const Outcomes outcomes(checker);
    checker.check();
    checker.check();
    ASSERT_TRUE(outcomes.wait());
    checker.check();
    ASSERT_TRUE(QTest::qWaitFor([&] { return outcomes.count() == 2; }, 30000));
    EXPECT_EQ(outcomes.found.size(), 2);
    EXPECT_EQ(server.requests(), 2);
}

// The helper process reports what the checker in it found, field for field;
// a helper that cannot run is a failure, not silence.
TEST(UpdateCheckProcess, CarriesEachOutcomeOfTheHelper)
{
    LocalFeedServer server;
    server.answer("/newer.xml", 200, newerFeed);
    server.answer("/same.xml", 200, appcastFeed(appcastItem("5", "1.5", "https://example.com/a")));
    // A version that would shift a file: address into the link's line.
    server.answer("/shifted.xml", 200,
        appcastFeed(appcastItem("9&#10;x&#10;file:///etc/passwd", "1.9", "https://example.com/a")));
    const QString helper = QStringLiteral(ZETTLY_UPDATE_HELPER);
    struct Case {
        const char *name;
        QString helper;
        const char *path;
        bool found;
        std::optional<F> failure;
    };
    const Case cases[] = {
        { "newer", helper, "/newer.xml", true, {} },
        { "same", helper, "/same.xml", false, {} },
        { "field with line breaks", helper, "/shifted.xml", false, F::InvalidFeed },
        { "no helper", u"/nonexistent/zettly-update-check"_s, "/newer.xml", false, F::Unreachable },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        UpdateCheckProcess check(c.helper, server.url(QString::fromLatin1(c.path)), u"5"_s);
        check.setExtraCaCertificatesFile(LocalFeedServer::caCertificatesFile());
        expectOutcome(check, c.found, c.failure);
    }
}
