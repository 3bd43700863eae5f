#pragma once

#include "ui/Spring.h"

#include <QRectF>
#include <QTransform>

class QImage;
class QPainter;

namespace kelp {

/// How the card comes up, by a spring: faded and blurred at first, a little smaller than it ends up.
struct Entrance
{
    double part = 1; ///< 0 = about to come up, 1 = there; the spring passes 1 before it settles there

    /// `seconds` after the overlay was shown.
    [[nodiscard]] static Entrance at(double seconds);
    /// Seconds after which it is over.
    [[nodiscard]] static double duration();

    /// Where a card whose picture takes `frame` in the end is now.
    [[nodiscard]] QTransform transform(const QRectF &frame) const;
    /// Paints the card's picture, `opacity` of it. Changes the painter's transform and opacity.
    void paint(QPainter &painter, const QRectF &frame, const QImage &card, double opacity) const;
};

} // namespace kelp
