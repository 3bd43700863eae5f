#include "ui/Blink.h"

#include <cmath>

namespace kelp {

namespace {

/// Periods are counted from 2001-01-01 00:00 UTC on.
constexpr Instant reference{978307200};

double periods(Instant now)
{
    return (now - reference) / Blink::period;
}

} // namespace

bool Blink::isLit(Instant now)
{
    return std::fmod(std::floor(periods(now)), 2) == 0;
}

double Blink::untilTurn(Instant now)
{
    // Just past the turn, so that it has happened for certain.
    constexpr double past = 0.002;
    return (std::floor(periods(now)) + 1 - periods(now)) * period + past;
}

} // namespace kelp
