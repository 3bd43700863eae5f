#pragma once

#include <QDateTime>
#include <QString>

#include <compare>
#include <cstdint>
#include <optional>

namespace kelp {

/// A point in absolute time: seconds since 1970-01-01 00:00 UTC, leap seconds not counted.
/// A double holds microseconds well past the year 2200.
struct Instant
{
    double secondsSince1970 = 0;

    friend auto operator<=>(const Instant &, const Instant &) = default;
    friend Instant operator+(Instant instant, double seconds) { return {instant.secondsSince1970 + seconds}; }
    friend Instant operator-(Instant instant, double seconds) { return {instant.secondsSince1970 - seconds}; }
    /// Seconds from `b` to `a`.
    friend double operator-(Instant a, Instant b) { return a.secondsSince1970 - b.secondsSince1970; }

    /// Truncated toward zero; values beyond 64 bits are clamped.
    [[nodiscard]] std::int64_t wholeSeconds() const;
    /// In the zone of the desktop, to the millisecond.
    [[nodiscard]] QDateTime toLocalDateTime() const;
    /// "2026-01-01T09:00:00Z": UTC, fractions dropped.
    [[nodiscard]] QString toIso8601() const;
    /// "2026-01-01T09:00:00.250Z": UTC, to the nearest millisecond.
    [[nodiscard]] QString toIso8601Milliseconds() const;

    [[nodiscard]] static Instant fromDateTime(const QDateTime &dateTime);
    /// Reads an RFC 3339 instant: "2026-01-01T10:00:00+01:00" or "2026-01-01T09:00:00.250Z". The offset is required;
    /// a date that does not exist, a leap second or any other form gives nothing.
    [[nodiscard]] static std::optional<Instant> parse(QStringView text);
};

/// The shortest decimal form that reads back as the same double, without exponent, with at least one digit
/// behind the point: "1767261600.0".
[[nodiscard]] QString shortestDecimal(double value);

} // namespace kelp
