#pragma once

#include "base/Instant.h"

#include <QString>

namespace kelp {

// Dates and times as the user's locale writes them, in the zone of the desktop.

/// "9:05 AM" or "09:05", never with seconds.
[[nodiscard]] QString shortTime(Instant instant);
/// The time alone on the day of `now`, otherwise with the date in short form before it: "1/2/26, 9:05 AM".
[[nodiscard]] QString shortTimeWithDay(Instant instant, Instant now);
/// Date and time as the locale orders and writes the fields of `skeleton` (Unicode TR 35, "EEEjjmm": the weekday, and
/// the time with as many digits and the day period that the locale wants).
[[nodiscard]] QString localizedTime(Instant instant, const QString &skeleton);
/// How far away `instant` is, in the greatest whole unit: "in 12 minutes", "2 hours ago".
[[nodiscard]] QString relativeTime(Instant instant, Instant now);

} // namespace kelp
