// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppcastRelease.h"

#include <QObject>

// A way of finding out whether a newer release exists. Each check ends with
// exactly one of updateFound(), noUpdateFound() or checkFailed(), from the
// event loop.
class UpdateCheck : public QObject {
    Q_OBJECT

public:
    enum class Failure {
        // Not https, or redirected away from https.
        BadAddress,
        // No answer: refused, unknown host, closed, timed out, TLS error.
        Unreachable,
        // An answer other than 2xx, or too many redirects.
        HttpError,
        // Not a feed, no release in it, or larger than the feed limit.
        InvalidFeed,
    };
    Q_ENUM(Failure)

    using QObject::QObject;

    // Starts a check; does nothing while one runs.
    virtual void check() = 0;

Q_SIGNALS:
    void updateFound(const AppcastRelease &release);
    void noUpdateFound();
    // reason is a French sentence for the user.
    void checkFailed(UpdateCheck::Failure failure, const QString &reason);
};
