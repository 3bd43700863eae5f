#include "platform/EventTime.h"

#include <chrono>

namespace kelp {

namespace {

std::int64_t monotonicMilliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

} // namespace

double eventTime(std::uint32_t milliseconds)
{
    return eventTime(milliseconds, monotonicMilliseconds());
}

double monotonicTime()
{
    return static_cast<double>(monotonicMilliseconds()) / 1000;
}

double eventTime(std::uint32_t milliseconds, std::int64_t now)
{
    // The one of the possible times that lies closest to now.
    const auto ahead = static_cast<std::int32_t>(milliseconds - static_cast<std::uint32_t>(now));
    return static_cast<double>(now + ahead) / 1000;
}

} // namespace kelp
