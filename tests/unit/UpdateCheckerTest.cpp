// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateChecker.h"
#include "AppcastFeed.h"
#include "LocalFeedServer.h"
#include "UpdateCheckProcess.h"

#include <QSignalSpy>
#include <QTest>

#include <optional>

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
    server.redirect("/moved-again.xml", server.url(QStringLiteral("/newer.xml")).toEncoded());
    server.redirect("/to-http.xml", server.url(QStringLiteral("/newer.xml"), QStringLiteral("http")).toEncoded());
    server.redirect("/loop.xml", "/loop.xml");
    server.answer("/http-download.xml", 200, appcastFeed(appcastItem("12", "2.0", "http://example.com/zettly.deb")));

    using F = UpdateChecker::Failure;
    struct Case {
        const char *name;
        QUrl url;
        int found;
        int none;
        std::optional<F> failure;
        bool trusted = true;
    };
    const Case cases[] = {
        { "newest item is newer", server.url(QStringLiteral("/newer.xml")), 1, 0, {} },
        { "same version", server.url(QStringLiteral("/same.xml")), 0, 1, {} },
        { "redirects on the same server", server.url(QStringLiteral("/moved.xml")), 1, 0, {} },
        { "redirect to plain http", server.url(QStringLiteral("/to-http.xml")), 0, 0, F::BadAddress },
        { "download over plain http", server.url(QStringLiteral("/http-download.xml")), 0, 0, F::InvalidFeed },
        { "feed over plain http", server.url(QStringLiteral("/newer.xml"), QStringLiteral("http")), 0, 0,
            F::BadAddress },
        { "endless redirects", server.url(QStringLiteral("/loop.xml")), 0, 0, F::HttpError },
        { "not found", server.url(QStringLiteral("/missing.xml")), 0, 0, F::HttpError },
        { "closed unanswered", server.url(QStringLiteral("/closed.xml")), 0, 0, F::Unreachable },
        { "never answers", server.url(QStringLiteral("/silent.xml")), 0, 0, F::Unreachable },
        { "nothing listening", LocalFeedServer::deadUrl(), 0, 0, F::Unreachable },
        { "a web page", server.url(QStringLiteral("/html.xml")), 0, 0, F::InvalidFeed },
        { "larger than allowed", server.url(QStringLiteral("/huge.xml")), 0, 0, F::InvalidFeed },
        { "ftp", QUrl(QStringLiteral("ftp://127.0.0.1/appcast.xml")), 0, 0, F::BadAddress },
        { "certificate nobody vouches for", server.url(QStringLiteral("/newer.xml")), 0, 0, F::Unreachable, false },
    };
    for (const Case &c : cases) {
        UpdateChecker checker(c.url, QStringLiteral("5"));
        checker.setTimeout(2s);
        if (c.trusted)
            checker.setExtraCaCertificates(LocalFeedServer::caCertificates());
        const Outcomes outcomes(checker);
        checker.check();
        ASSERT_TRUE(outcomes.wait()) << c.name;
        EXPECT_EQ(outcomes.count(), 1) << c.name;
        EXPECT_FALSE(checker.isChecking()) << c.name;
        ASSERT_EQ(outcomes.found.size(), c.found) << c.name;
        EXPECT_EQ(outcomes.none.size(), c.none) << c.name;
        if (c.failure) {
            ASSERT_EQ(outcomes.failed.size(), 1) << c.name;
            EXPECT_EQ(outcomes.failed[0][0].value<F>(), *c.failure) << c.name;
            EXPECT_FALSE(outcomes.failed[0][1].toString().isEmpty()) << c.name;
        }
        if (c.found) {
            EXPECT_EQ(outcomes.found[0][0].value<AppcastRelease>(),
                (AppcastRelease { QStringLiteral("12"), QStringLiteral("2.0"),
                    QUrl(QStringLiteral("https://example.com/zettly-2.0.deb")) }))
                << c.name;
        }
    }
}

TEST(UpdateChecker, OneCheckAtATimeThenAgain)
{
    LocalFeedServer server;
    server.answer("/appcast.xml", 200, newerFeed);
    UpdateChecker checker(server.url(QStringLiteral("/appcast.xml")), QStringLiteral("5"));
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
    using F = UpdateCheck::Failure;
    struct Case {
        const char *name;
        QString helper;
        const char *path;
        bool found;
        bool none;
        std::optional<F> failure;
    };
    const Case cases[] = {
        { "newer", helper, "/newer.xml", true, false, {} },
        { "same", helper, "/same.xml", false, true, {} },
        { "field with line breaks", helper, "/shifted.xml", false, false, F::InvalidFeed },
        { "no helper", QStringLiteral("/nonexistent/zettly-update-check"), "/newer.xml", false, false, F::Unreachable },
    };
    for (const Case &c : cases) {
        UpdateCheckProcess check(c.helper, server.url(QString::fromLatin1(c.path)), QStringLiteral("5"));
        check.setExtraCaCertificatesFile(LocalFeedServer::caCertificatesFile());
        const Outcomes outcomes(check);
        check.check();
        ASSERT_TRUE(outcomes.wait()) << c.name;
        // A second report would already be queued.
        QCoreApplication::processEvents();
        ASSERT_EQ(outcomes.count(), 1) << c.name;
        EXPECT_EQ(outcomes.none.size(), c.none ? 1 : 0) << c.name;
        if (c.found) {
            ASSERT_EQ(outcomes.found.size(), 1) << c.name;
            EXPECT_EQ(outcomes.found.at(0).at(0).value<AppcastRelease>(),
                (AppcastRelease { QStringLiteral("12"), QStringLiteral("2.0"),
                    QUrl(QStringLiteral("https://example.com/zettly-2.0.deb")) }));
        }
        if (c.failure) {
            ASSERT_EQ(outcomes.failed.size(), 1) << c.name;
            EXPECT_EQ(outcomes.failed.at(0).at(0).value<F>(), *c.failure) << c.name;
            EXPECT_FALSE(outcomes.failed.at(0).at(1).toString().isEmpty()) << c.name;
        }
    }
}
