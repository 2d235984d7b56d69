// SPDX-License-Identifier: GPL-3.0-or-later
#include "RelativeAge.h"

#include <QLocale>

#include <unicode/locid.h>
#include <unicode/reldatefmt.h>
#include <unicode/unistr.h>

#include <array>
#include <cmath>

namespace {

struct Unit {
    double seconds;
    URelativeDateTimeUnit unit;
};

// The largest unit that the age holds at least once, as a calendar would
// count it roughly: 59 minutes stay minutes, 25 hours become "hier".
constexpr std::array units {
    Unit { 365 * 86400.0, UDAT_REL_UNIT_YEAR },
    Unit { 30 * 86400.0, UDAT_REL_UNIT_MONTH },
    Unit { 7 * 86400.0, UDAT_REL_UNIT_WEEK },
    Unit { 86400.0, UDAT_REL_UNIT_DAY },
    Unit { 3600.0, UDAT_REL_UNIT_HOUR },
    Unit { 60.0, UDAT_REL_UNIT_MINUTE },
};

} // namespace

RelativeAge::RelativeAge(const QString &localeName)
{
    QString name = localeName.isEmpty() ? QLocale::system().name() : localeName;
    // A session without a language ("C", ICU's root locale, which has no
    // plural forms) reads the interface's own language rather than English.
    if (name == QLatin1String("C") || name == QLatin1String("POSIX"))
        name = QStringLiteral("fr");
    UErrorCode status = U_ZERO_ERROR;
    auto formatter = std::make_unique<icu::RelativeDateTimeFormatter>(
        icu::Locale(name.toUtf8().constData()), nullptr, UDAT_STYLE_LONG, UDISPCTX_CAPITALIZATION_NONE, status);
    if (U_SUCCESS(status))
        m_formatter = std::move(formatter);
}

RelativeAge::~RelativeAge() = default;

QString RelativeAge::text(double createdAt, double now) const
{
    if (!m_formatter)
        return {};
    const double age = now - createdAt;
    double amount = std::trunc(age);
    URelativeDateTimeUnit unit = UDAT_REL_UNIT_SECOND;
    for (const Unit &candidate : units) {
        if (std::abs(age) >= candidate.seconds) {
            amount = std::trunc(age / candidate.seconds);
            unit = candidate.unit;
            break;
        }
    }
    // Named presentation: "hier" rather than "il y a 1 jour".
    icu::UnicodeString out;
    UErrorCode status = U_ZERO_ERROR;
    m_formatter->format(amount == 0 ? 0.0 : -amount, unit, out, status);
    if (U_FAILURE(status))
        return {};
    return QString(reinterpret_cast<const QChar *>(out.getBuffer()), out.length());
}
