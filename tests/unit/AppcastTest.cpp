// SPDX-License-Identifier: GPL-3.0-or-later
#include "Appcast.h"
#include "AppcastFeed.h"
#include "VersionComparison.h"

#include <gtest/gtest.h>

#include <optional>

TEST(VersionComparison, NumbersThenTextPartByPart)
{
    struct Case {
        const char *a;
        const char *b;
        int order;
    };
    const Case cases[] = {
        { "1.10", "1.9", 1 },
        { "1.2.3", "1.2.4", -1 },
        { "1.0", "1", 0 },
        { "1.0.0", "1", 0 },
        { "01.002", "1.2", 0 },
        { "2", "1.99", 1 },
        { "1.2.1", "1.2", 1 },
        { "99999999999999999999999", "99999999999999999999998", 1 },
        { "1.10a", "1.9b", 1 },
        { "1.2a", "1.2b", -1 },
    };
    for (const Case &c : cases) {
        const QString a = QString::fromLatin1(c.a);
        const QString b = QString::fromLatin1(c.b);
        EXPECT_EQ(VersionComparison::compare(a, b), c.order) << c.a << " vs " << c.b;
        EXPECT_EQ(VersionComparison::compare(b, a), -c.order) << c.b << " vs " << c.a;
    }
}

TEST(Appcast, NewestReleaseByVersionOrNothing)
{
    const auto release = [](const char *version, const char *shortVersion, const char *url) {
        return std::optional<AppcastRelease>(
            { QString::fromLatin1(version), QString::fromLatin1(shortVersion), QUrl(QString::fromLatin1(url)) });
    };
    struct Case {
        const char *name;
        QByteArray feed;
        std::optional<AppcastRelease> newest;
    };
    const Case cases[] = {
        { "one item", appcastFeed(appcastItem("7", "1.2", "https://example.com/z.deb")),
            release("7", "1.2", "https://example.com/z.deb") },
        { "by version, not position",
            appcastFeed(appcastItem("1.9", "a", "https://example.com/9")
                + appcastItem("1.10", "b", "https://example.com/10")
                + appcastItem("1.2", "c", "https://example.com/2")),
            release("1.10", "b", "https://example.com/10") },
        { "version and link as elements", appcastFeed(R"(<item><sparkle:version> 8 </sparkle:version>
                <sparkle:shortVersionString>1.3</sparkle:shortVersionString>
                <link> https://example.com/download </link></item>)"),
            release("8", "1.3", "https://example.com/download") },
        { "version element beside an enclosure",
            appcastFeed(R"(<item><sparkle:version>9</sparkle:version><link>https://example.com/page</link>
                <enclosure url="https://example.com/z.deb" length="1"/></item>)"),
            release("9", "", "https://example.com/z.deb") },
        { "items lacking a version or a link are passed over",
            appcastFeed(R"(<item><enclosure url="https://example.com/99" length="1"/></item>)"
                + appcastItem("99", "9.9", "") + appcastItem("99", "9.9", "file://localhost/etc/passwd")
                + appcastItem("99", "9.9", "http://example.com/99") + appcastItem("2", "0.2", "https://example.com/2")),
            release("2", "0.2", "https://example.com/2") },
        { "no item with a version", appcastFeed("<item><title>Zettly</title></item>"), std::nullopt },
        { "no channel", "<rss version=\"2.0\"></rss>", std::nullopt },
        { "cut short after an item", appcastFeed(appcastItem("7", "1.2", "https://example.com/z.deb")).chopped(20),
            std::nullopt },
        { "not XML", "Bienvenue sur Zettly", std::nullopt },
    };
    for (const Case &c : cases)
        EXPECT_EQ(Appcast::newestRelease(c.feed), c.newest) << c.name;
}
