#include "overlay/CountdownFigures.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace kelp {

std::int64_t wholeSeconds(double seconds)
{
    constexpr double limit = 1e15; // well within 64 bits
    return std::llround(std::clamp(seconds, -limit, limit));
}

QString minutesAndSeconds(std::int64_t seconds)
{
    return u"%1:%2"_s.arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

} // namespace kelp
