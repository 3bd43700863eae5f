#include "ui/Spring.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelp {

double Spring::position(double seconds) const
{
    if (seconds <= 0)
        return 0;
    const double omega = 2 * std::numbers::pi / response;
    const double damping = std::min(dampingFraction, 1.0);
    const double decay = std::exp(-damping * omega * seconds);
    if (damping == 1.0)
        return 1 - decay * (1 + omega * seconds);
    const double ringing = omega * std::sqrt(1 - damping * damping);
    return 1 - decay * (std::cos(ringing * seconds) + damping * omega / ringing * std::sin(ringing * seconds));
}

double Spring::settlingTime() const
{
    const double omega = 2 * std::numbers::pi / response;
    const double damping = std::min(dampingFraction, 1.0);
    // The envelope e^(-damping·omega·t), times (1 + omega·t) where critically damped, falls below 0.001.
    return (damping == 1.0 ? 9.24 : std::log(1000 / std::sqrt(1 - damping * damping)) / damping) / omega;
}

} // namespace kelp
