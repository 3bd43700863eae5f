#include "base/Instant.h"

#include <QTimeZone>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// Reads one character after the other; every reader moves on only where it succeeds.
class Scanner
{
public:
    explicit Scanner(QStringView text) : m_text(text) {}

    [[nodiscard]] bool atEnd() const { return m_position == m_text.size(); }

    bool skip(char16_t expected)
    {
        if (atEnd() || m_text[m_position] != expected)
            return false;
        ++m_position;
        return true;
    }

    /// Exactly `count` ASCII digits, with a value between `least` and `most`.
    std::optional<int> number(int count, int least, int most)
    {
        int value = 0;
        for (int i = 0; i < count; ++i) {
            const std::optional<int> next = digit();
            if (!next)
                return {};
            value = value * 10 + *next;
        }
        return value < least || value > most ? std::nullopt : std::optional(value);
    }

    std::optional<int> digit()
    {
        if (atEnd() || m_text[m_position] < u'0' || m_text[m_position] > u'9')
            return {};
        return m_text[m_position++].unicode() - u'0';
    }

private:
    QStringView m_text;
    qsizetype m_position = 0;
};

std::optional<double> fraction(Scanner &scanner)
{
    if (!scanner.skip(u'.'))
        return 0.0;
    double value = 0;
    double unit = 1;
    bool any = false;
    while (const std::optional<int> digit = scanner.digit()) {
        any = true;
        unit *= 10;
        // Past 15 digits a double holds nothing more of the fraction.
        if (unit <= 1e15)
            value = value * 10 + *digit;
    }
    return any ? std::optional(value / std::min(unit, 1e15)) : std::nullopt;
}

std::optional<int> offsetSeconds(Scanner &scanner)
{
    if (scanner.skip(u'Z'))
        return 0;
    const int sign = scanner.skip(u'+') ? 1 : scanner.skip(u'-') ? -1 : 0;
    if (sign == 0)
        return {};
    const std::optional<int> hours = scanner.number(2, 0, 23);
    if (!hours || !scanner.skip(u':'))
        return {};
    const std::optional<int> minutes = scanner.number(2, 0, 59);
    return minutes ? std::optional(sign * (*hours * 3600 + *minutes * 60)) : std::nullopt;
}

/// `milliseconds` since 1970; fractions of one are dropped.
QDateTime utc(double milliseconds)
{
    // Written dates have four-digit years, and Qt has no year 0; anything else is pinned to the ends of that range.
    constexpr double least = -62135596800000.0; // 0001-01-01
    constexpr double most = 253402300799999.0;  // 9999-12-31 23:59:59.999
    const double pinned = std::isnan(milliseconds) ? 0.0 : std::clamp(milliseconds, least, most);
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(std::floor(pinned)), Qt::UTC);
}

} // namespace

std::int64_t Instant::wholeSeconds() const
{
    constexpr double limit = 9223372036854774784.0; // the greatest double below 2^63
    if (std::isnan(secondsSince1970))
        return 0;
    return static_cast<std::int64_t>(std::clamp(std::trunc(secondsSince1970), -limit, limit));
}

QDateTime Instant::toLocalDateTime() const
{
    return utc(secondsSince1970 * 1000).toLocalTime();
}

QString Instant::toIso8601() const
{
    return utc(std::floor(secondsSince1970) * 1000).toString(u"yyyy-MM-dd'T'HH:mm:ss'Z'");
}

QString Instant::toIso8601Milliseconds() const
{
    return utc(std::round(secondsSince1970 * 1000)).toString(u"yyyy-MM-dd'T'HH:mm:ss.zzz'Z'");
}

Instant Instant::fromDateTime(const QDateTime &dateTime)
{
    return {static_cast<double>(dateTime.toMSecsSinceEpoch()) / 1000};
}

std::optional<Instant> Instant::parse(QStringView text)
{
    Scanner scanner(text);
    const std::optional<int> year = scanner.number(4, 0, 9999);
    if (!year || !scanner.skip(u'-'))
        return {};
    const std::optional<int> month = scanner.number(2, 1, 12);
    if (!month || !scanner.skip(u'-'))
        return {};
    const std::optional<int> day = scanner.number(2, 1, 31);
    if (!day || !scanner.skip(u'T'))
        return {};
    const std::optional<int> hour = scanner.number(2, 0, 23);
    if (!hour || !scanner.skip(u':'))
        return {};
    const std::optional<int> minute = scanner.number(2, 0, 59);
    if (!minute || !scanner.skip(u':'))
        return {};
    const std::optional<int> second = scanner.number(2, 0, 59);
    if (!second)
        return {};
    const std::optional<double> part = fraction(scanner);
    if (!part)
        return {};
    const std::optional<int> offset = offsetSeconds(scanner);
    if (!offset || !scanner.atEnd())
        return {};

    using namespace std::chrono;
    const year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                              std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok())
        return {};
    const auto days = sys_days(date).time_since_epoch().count();
    const double whole =
        static_cast<double>(days) * 86400.0 + *hour * 3600.0 + *minute * 60.0 + *second - static_cast<double>(*offset);
    return Instant{whole + *part};
}

QString shortestDecimal(double value)
{
    std::array<char, 400> buffer{}; // 309 digits before the point at most
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed).ptr;
    const QString text = QString::fromLatin1(buffer.data(), end - buffer.data());
    return text.contains(u'.') || !std::isfinite(value) ? text : text + u".0"_s;
}

} // namespace kelp
