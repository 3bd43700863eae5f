#pragma once

#include "base/Instant.h"
#include "themes/Theme.h"
#include "ui/Element.h"

#include <QString>

namespace kelp {

/// A ring that drains towards the meeting's start, with the time that remains in its middle. A value, 210 points wide
/// and high; the ring's line lies half within and half outside of that.
struct CountdownRing
{
    Instant start;
    double total = 60; ///< seconds that the full ring stands for, more than 0
    OverlayTheme theme;

    /// The text in the middle, `remaining` seconds before the start: "4:59", "now", "+0:07".
    [[nodiscard]] static QString label(double remaining);
    /// What stands below it.
    [[nodiscard]] static QString caption(double remaining);
    /// Seconds until the label or the caption reads differently, more than 0.
    [[nodiscard]] static double untilNextLabel(double remaining);

    /// How much of the ring is left, 0…1.
    [[nodiscard]] double progress(Instant now) const;
    /// The texts are those of `now`; the ring itself moves on by itself.
    [[nodiscard]] Element element(Instant now) const;

private:
    [[nodiscard]] Element figures(double remaining) const;
    [[nodiscard]] Element arc() const;
    [[nodiscard]] double untilArcMoves(Instant now, double density) const;
    [[nodiscard]] QRectF movedArc(Instant from, Instant to) const;
};

} // namespace kelp
