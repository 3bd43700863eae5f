#pragma once

#include "base/Instant.h"

namespace kelp {

/// The rhythm of a blinking cursor: every cursor on every screen is lit at the same time.
struct Blink
{
    /// Seconds that it stays lit, and dark.
    static constexpr double period = 0.55;

    [[nodiscard]] static bool isLit(Instant now);
    /// Seconds until it is the other way round, more than 0.
    [[nodiscard]] static double untilTurn(Instant now);
};

} // namespace kelp
