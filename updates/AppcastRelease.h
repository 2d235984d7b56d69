// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QUrl>

// One release offered by the update feed.
struct AppcastRelease {
    // Compared with the running build (VersionComparison).
    QString version;
    // Shown to the user; may be empty.
    QString shortVersion;
    // The page or file to open for the download: always https.
    QUrl downloadUrl;

    friend bool operator==(const AppcastRelease &, const AppcastRelease &) = default;
};
