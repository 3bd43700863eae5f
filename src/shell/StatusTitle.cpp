#include "shell/StatusTitle.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace kelp {

QString statusTitle(std::optional<double> secondsUntilStart, bool isPaused)
{
    if (isPaused || !secondsUntilStart)
        return {};
    constexpr double most = 60; // minutes; further ahead a number would only distract
    const double minutes = std::trunc(*secondsUntilStart / 60);
    if (minutes < 1)
        return u" now"_s;
    // Written so that what is no number shows nothing.
    return minutes <= most ? u" %1m"_s.arg(static_cast<int>(minutes)) : QString();
}

} // namespace kelp
