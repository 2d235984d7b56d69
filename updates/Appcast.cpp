// SPDX-License-Identifier: GPL-3.0-or-later
#include "Appcast.h"

#include "VersionComparison.h"

#include <QXmlStreamReader>

namespace {

bool isPlain(const QXmlStreamReader &xml, QStringView name)
{
    return xml.name() == name && xml.namespaceUri().isEmpty();
}

bool isRelease(const QXmlStreamReader &xml, QStringView name)
{
    return xml.name() == name && xml.namespaceUri() == Appcast::releaseNamespace;
}

QString text(QXmlStreamReader &xml)
{
    return xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
}

std::optional<AppcastRelease> readItem(QXmlStreamReader &xml)
{
    QString enclosureVersion;
    QString enclosureShortVersion;
    QUrl enclosureUrl;
    bool hasEnclosure = false;
    QString elementVersion;
    QString elementShortVersion;
    QUrl link;
    while (xml.readNextStartElement()) {
        if (isPlain(xml, u"enclosure")) {
            const QXmlStreamAttributes attributes = xml.attributes();
            if (!hasEnclosure && attributes.hasAttribute(QStringLiteral("url"))) {
                hasEnclosure = true;
                enclosureUrl = Appcast::webUrl(attributes.value(QStringLiteral("url")));
                const auto inRelease = [&](const QString &name) {
                    return attributes.value(Appcast::releaseNamespace, name).trimmed().toString();
                };
                enclosureVersion = inRelease(QStringLiteral("version"));
                enclosureShortVersion = inRelease(QStringLiteral("shortVersionString"));
            }
            xml.skipCurrentElement();
        } else if (isPlain(xml, u"link")) {
            link = Appcast::webUrl(text(xml));
        } else if (isRelease(xml, u"version")) {
            elementVersion = text(xml);
        } else if (isRelease(xml, u"shortVersionString")) {
            elementShortVersion = text(xml);
        } else {
            xml.skipCurrentElement();
        }
    }
    AppcastRelease release;
    release.version = enclosureVersion.isEmpty() ? elementVersion : enclosureVersion;
    release.shortVersion = enclosureShortVersion.isEmpty() ? elementShortVersion : enclosureShortVersion;
    release.downloadUrl = enclosureUrl.isEmpty() ? link : enclosureUrl;
    if (release.version.isEmpty() || release.downloadUrl.isEmpty())
        return std::nullopt;
    return release;
}

} // namespace

std::optional<AppcastRelease> Appcast::newestRelease(const QByteArray &feed)
{
    QXmlStreamReader xml(feed);
    if (!xml.readNextStartElement() || !isPlain(xml, u"rss"))
        return std::nullopt;
    std::optional<AppcastRelease> newest;
    bool hasChannel = false;
    while (xml.readNextStartElement()) {
        if (!isPlain(xml, u"channel")) {
            xml.skipCurrentElement();
            continue;
        }
        hasChannel = true;
        while (xml.readNextStartElement()) {
            if (!isPlain(xml, u"item")) {
                xml.skipCurrentElement();
                continue;
            }
            std::optional<AppcastRelease> release = readItem(xml);
            // The first of equal versions wins.
            if (release && (!newest || VersionComparison::compare(release->version, newest->version) > 0))
                newest = std::move(release);
        }
    }
    // Read to the end: junk after the channel or a cut-off document is an error too.
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError() || !hasChannel)
        return std::nullopt;
    return newest;
}

QUrl Appcast::webUrl(QStringView text)
{
    const QUrl url(text.trimmed().toString(), QUrl::StrictMode);
    return url.isValid() && url.scheme() == u"https" && !url.host().isEmpty() ? url : QUrl();
}
