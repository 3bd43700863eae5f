#pragma once

#include "base/Instant.h"
#include "themes/Theme.h"

#include <QRectF>
#include <QRegion>

class QPainter;

namespace kelp {

class SoftImage;

/// The moving scene that some themes lay over their background. A picture of it depends on the size and on one time t
/// alone. What is smooth in it goes into a SoftImage, which is enlarged; points, lines and edges are then painted over.
struct AnimatedLayer
{
    AnimatedKind kind;
    bool animate = false;

    /// Seconds since 2001-01-01 00:00 UTC; without motion always the same moment, one that shows the scene well.
    [[nodiscard]] double time(Instant shown) const;

    /// Seconds: painting more often shows nothing new to the eye. Rain and the lines of a floor that come nearer are
    /// fast; what glows or twinkles moves by less than half a point meanwhile.
    [[nodiscard]] double leastInterval() const;
    /// Seconds between two pictures of what is soft where a wandering picture lies under it: both are made at once, and
    /// on a view of 1440x900 neither moves by more than half a point meanwhile.
    [[nodiscard]] double softInterval() const;

    void paintSoft(SoftImage &image, double t) const;
    /// Whether what is soft never changes either.
    [[nodiscard]] bool isSoftStill() const;
    /// What is sharp and never moves. Nothing of it lies outside `stillPart`.
    void paintStill(QPainter &painter, const QSizeF &size) const;
    [[nodiscard]] QRectF stillPart(const QSizeF &size) const;
    /// What is sharp and moves, or shines through what stands still; only within `part` (points).
    void paintSharp(QPainter &painter, const QSizeF &size, double t, const QRegion &part) const;

    /// Outside of it nothing changes with t.
    [[nodiscard]] QRectF movingPart(const QSizeF &size) const;
    /// What paintSharp touches at t of what it does not touch, or otherwise, at another time.
    [[nodiscard]] QRegion sharpPart(const QSizeF &size, double t) const;
};

} // namespace kelp
