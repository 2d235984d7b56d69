// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <unicode/uversion.h>

#include <memory>

U_NAMESPACE_BEGIN
class RelativeDateTimeFormatter;
U_NAMESPACE_END

// How long ago an entry was copied, in words of the user's language, as
// ICU names it: "maintenant", "il y a 5 minutes", "hier", "il y a 3 semaines".
class RelativeAge {
public:
    // localeName as QLocale::name() gives it ("fr_FR"); the system's by
    // default; French for a session without a language ("C").
    explicit RelativeAge(const QString &localeName = {});
    ~RelativeAge();

    RelativeAge(const RelativeAge &) = delete;
    RelativeAge &operator=(const RelativeAge &) = delete;

    // Both in seconds since 2001-01-01 UTC, as ClipItem::createdAt.
    QString text(double createdAt, double now) const;

private:
    std::unique_ptr<icu::RelativeDateTimeFormatter> m_formatter;
};
