#pragma once

#include <QString>

#include <cstdint>

namespace kelp {

/// To the nearest whole one, halves away from zero; what no 64 bits hold is cut down.
[[nodiscard]] std::int64_t wholeSeconds(double seconds);

/// "4:05"; minutes are not wrapped into hours: "75:00".
[[nodiscard]] QString minutesAndSeconds(std::int64_t seconds);

/// For this long, in seconds, a meeting counts as just starting.
inline constexpr double startingSeconds = 5;

} // namespace kelp
