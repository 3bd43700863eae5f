#pragma once

#include "base/Instant.h"

#include <QString>

/// What the panel says about times and names.
namespace kelp::panel {

/// "Kelp in 5 min": how long until the overlay opens, minutes rounded up; "now" when it is due.
[[nodiscard]] QString countdown(Instant target, Instant now);
/// "just now", "5 min ago": never hours.
[[nodiscard]] QString ago(Instant instant, Instant now);
/// The time alone on the day of `now`, otherwise with the weekday.
[[nodiscard]] QString shortTime(Instant instant, Instant now);
/// "Today", "Tomorrow", or the weekday and the date.
[[nodiscard]] QString day(Instant instant, Instant now);
/// When a pause ends: the time, with the weekday where that is not today.
[[nodiscard]] QString pauseEnd(Instant end, Instant now);
/// A calendar's name; of a subscribed feed, which is named by its address, only the host.
[[nodiscard]] QString displayName(const QString &name);

/// The first moment of the day after that of `now`.
[[nodiscard]] Instant tomorrow(Instant now);
/// A text of somebody else's for a place within one of our own, which it cannot turn around.
[[nodiscard]] QString within(const QString &text);

} // namespace kelp::panel
