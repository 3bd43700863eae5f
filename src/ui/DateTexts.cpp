#include "ui/DateTexts.h"

#include <QHash>
#include <QLocale>
#include <QRegularExpression>

#include <unicode/dtptngen.h>
#include <unicode/reldatefmt.h>
#include <unicode/smpdtfmt.h>

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// Qt writes seconds in the C locale's short times, and a few other locales do.
QString timePattern(const QLocale &locale)
{
    if (locale.language() == QLocale::C)
        return u"HH:mm"_s;
    static const QRegularExpression seconds(u"[:.]?ss?"_s);
    return locale.timeFormat(QLocale::ShortFormat).remove(seconds).trimmed();
}

QString datePattern(const QLocale &locale)
{
    return locale.language() == QLocale::C ? u"M/d/yy"_s : locale.dateFormat(QLocale::ShortFormat);
}

struct Amount
{
    double value; ///< negative in the past
    UDateRelativeUnit unit;
};

/// The greatest calendar unit of which a whole one lies between the two.
Amount amount(const QDateTime &from, const QDateTime &to)
{
    const int sign = to < from ? -1 : 1;
    const auto whole = [&](int estimate, const auto &stepped) {
        int count = std::abs(estimate);
        while (count > 0 && (sign > 0 ? stepped(count) > to : stepped(-count) < to))
            --count;
        return count;
    };
    const int monthsApart = (to.date().year() - from.date().year()) * 12 + to.date().month() - from.date().month();
    if (const int months = whole(monthsApart, [&](int count) { return from.addMonths(count); }); months > 0)
        return months >= 12 ? Amount{double(sign * (months / 12)), UDAT_RELATIVE_YEARS}
                            : Amount{double(sign * months), UDAT_RELATIVE_MONTHS};
    const int daysApart = static_cast<int>(from.daysTo(to));
    if (const int days = whole(daysApart, [&](int count) { return from.addDays(count); }); days > 0)
        return days >= 7 ? Amount{double(sign * (days / 7)), UDAT_RELATIVE_WEEKS}
                         : Amount{double(sign * days), UDAT_RELATIVE_DAYS};
    const qint64 seconds = std::abs(from.msecsTo(to)) / 1000;
    if (seconds >= 3600)
        return {double(sign * (seconds / 3600)), UDAT_RELATIVE_HOURS};
    if (seconds >= 60)
        return {double(sign * (seconds / 60)), UDAT_RELATIVE_MINUTES};
    return {double(sign * seconds), UDAT_RELATIVE_SECONDS};
}

/// The name of the locale for times: "de_DE"; empty for the C locale.
QByteArray timeLocaleName()
{
    for (const char *variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        QByteArray name = qgetenv(variable);
        if (name.isEmpty())
            continue;
        name = name.split('@').first().split('.').first();
        return name == "C" || name == "POSIX" ? QByteArray() : name;
    }
    return {};
}

icu::Locale icuLocale(const QByteArray &name)
{
    return icu::Locale(name.isEmpty() ? "en" : name.constData());
}

/// The locale's pattern for the skeleton. Finding one takes milliseconds.
icu::UnicodeString bestPattern(const QByteArray &localeName, QString skeleton)
{
    static QHash<QString, icu::UnicodeString> known;
    if (localeName.isEmpty())
        skeleton.replace(u'j', u'H'); // the C locale knows 24 hours, as in its short times
    icu::UnicodeString &pattern = known[QString::fromLatin1(localeName) + u' ' + skeleton];
    if (pattern.isEmpty()) {
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<icu::DateTimePatternGenerator> generator(
            icu::DateTimePatternGenerator::createInstance(icuLocale(localeName), status));
        if (U_SUCCESS(status))
            pattern = generator->getBestPattern(icu::UnicodeString(skeleton.utf16()), status);
    }
    return pattern;
}

} // namespace

QString localizedTime(Instant instant, const QString &skeleton)
{
    const QByteArray name = timeLocaleName();
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat format(bestPattern(name, skeleton), icuLocale(name), status);
    if (U_FAILURE(status))
        return shortTime(instant);
    // The zone is Qt's business: the local time is written as if it were that of Greenwich.
    format.setTimeZone(*icu::TimeZone::getGMT());
    const QDateTime local = instant.toLocalDateTime();
    const QDateTime asGreenwich(local.date(), local.time(), Qt::UTC);
    icu::UnicodeString text;
    format.format(static_cast<UDate>(asGreenwich.toMSecsSinceEpoch()), text);
    // Newer locale data has a narrow space before AM and PM, where Qt's has a plain one.
    return QString::fromUtf16(text.getBuffer(), text.length()).replace(QChar(0x202F), u' ');
}

QString shortTime(Instant instant)
{
    const QLocale locale = QLocale::system();
    return locale.toString(instant.toLocalDateTime().time(), timePattern(locale));
}

QString shortTimeWithDay(Instant instant, Instant now)
{
    const QDate day = instant.toLocalDateTime().date();
    if (day == now.toLocalDateTime().date())
        return shortTime(instant);
    const QLocale locale = QLocale::system();
    return locale.toString(day, datePattern(locale)) + u", "_s + shortTime(instant);
}

QString relativeTime(Instant instant, Instant now)
{
    const QLocale locale = QLocale::system();
    const QByteArray name = locale.language() == QLocale::C ? "en"_ba : locale.name().toLatin1();
    UErrorCode status = U_ZERO_ERROR;
    const icu::RelativeDateTimeFormatter formatter(icu::Locale(name.constData()), status);
    const Amount apart = amount(now.toLocalDateTime(), instant.toLocalDateTime());
    icu::UnicodeString text;
    const UDateDirection direction = apart.value < 0 ? UDAT_DIRECTION_LAST : UDAT_DIRECTION_NEXT;
    formatter.format(std::abs(apart.value), direction, apart.unit, text, status);
    return QString::fromUtf16(text.getBuffer(), text.length());
}

} // namespace kelp
