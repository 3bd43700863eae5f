#pragma once

#include <algorithm>
#include <cmath>

namespace kelp::scenes {

/// How far a place lies behind the card, where letters have to be read: 1 there, 0 towards the edges of the view, with
/// a long way between so that nobody sees it. `u` and `v` are parts of the view's width and height, 0…1.
[[nodiscard]] inline double behindCard(double u, double v)
{
    const double x = (u - 0.5) / 0.42;
    const double y = (v - 0.5) / 0.34;
    const double away = std::sqrt(std::sqrt(x * x * x * x + y * y * y * y)); // between an ellipse and a rectangle
    const double way = std::clamp((away - 0.7) / (1.3 - 0.7), 0.0, 1.0);
    return 1 - way * way * (3 - 2 * way);
}

} // namespace kelp::scenes
