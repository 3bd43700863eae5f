#pragma once

#include <cmath>

namespace kelp {

/// The part behind the point, also of negative numbers: 0 ≤ fract(x) < 1.
[[nodiscard]] inline double fract(double x)
{
    return x - std::floor(x);
}

/// A fixed pseudo-random number in 0…1 for element `index`; each `property` gives an independent one.
[[nodiscard]] inline double scatter(int index, double property)
{
    return fract(std::sin(index * 12.9898 + property) * 43758.5453);
}

} // namespace kelp
