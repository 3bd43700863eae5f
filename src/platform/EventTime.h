#pragma once

#include <cstdint>

namespace kelp {

/// Seconds for the time stamp of an input event: milliseconds of which only the last 32 bits are given, and which begin
/// again every 49 days. Window systems count them on the monotonic clock.
[[nodiscard]] double eventTime(std::uint32_t milliseconds);

/// Now, by the same clock.
[[nodiscard]] double monotonicTime();

/// The same as the first where the monotonic clock is at `now` milliseconds.
[[nodiscard]] double eventTime(std::uint32_t milliseconds, std::int64_t now);

} // namespace kelp
