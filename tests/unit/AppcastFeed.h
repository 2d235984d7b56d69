// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QStringBuilder>

// An RSS channel around items, with the release namespace declared.
inline QByteArray appcastFeed(const QByteArray &items)
{
    return QByteArray(R"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">
<channel><title>Zettly</title>)")
        + items + "</channel></rss>\n";
}

// An item whose enclosure carries the version, short version and address.
inline QByteArray appcastItem(const QByteArray &version, const QByteArray &shortVersion, const QByteArray &url)
{
    return QByteArray(R"(<item><title>Zettly</title><enclosure url=")") + url + R"(" sparkle:version=")" + version
        + R"(" sparkle:shortVersionString=")" + shortVersion
        + R"(" length="1" type="application/octet-stream"/></item>)";
}
