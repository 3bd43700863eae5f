#pragma once

#include <QRectF>
#include <QRegion>

class QPainter;

namespace kelp {
class SoftImage;
}

/// What the animated layers are made of: each paints a view-filling picture that is a function of the size and of `t`
/// (seconds). Elements are placed by scatter(), so that they are the same on every run. What has many small ones paints
/// only those in `part` (points), a rectangle at a time.
namespace kelp::scenes {

/// Curtains of northern lights, calmer in the middle, where the card is.
void paintAurora(SoftImage &image, double t);
void paintNightStars(QPainter &painter, const QSizeF &size, double t);
/// Hills with a wood at the lower edge.
void paintNightForest(QPainter &painter, const QSizeF &size);
[[nodiscard]] QRectF nightForestPart(const QSizeF &size);

/// 260 stars that twinkle in their places.
void paintStarfield(QPainter &painter, const QSizeF &size, double t, const QRegion &part);
[[nodiscard]] QRegion starfieldPart(const QSizeF &size);

/// The glow of an old screen, and a brighter band that rolls over it.
void paintPhosphor(SoftImage &image, double t);
/// Dim listings running up the sides, and the dark lines between the lit ones.
void paintScanlines(QPainter &painter, const QSizeF &size, double t);

/// Lights far out of focus.
void paintBokeh(SoftImage &image, double t);
void paintRain(QPainter &painter, const QSizeF &size, double t, const QRegion &part);
[[nodiscard]] QRegion rainPart(const QSizeF &size, double t);

/// An evening sky and the sun's glow over a dark floor. Does not move.
void paintDusk(SoftImage &image);
/// The sun, mountains, and the lines of the floor that run to the vanishing point.
void paintSunset(QPainter &painter, const QSizeF &size);
/// The lines across the floor, coming nearer.
void paintFloorRows(QPainter &painter, const QSizeF &size, double t);
[[nodiscard]] QRectF synthwaveMovingPart(const QSizeF &size);

/// Banks of fog drifting past each other.
void paintFog(SoftImage &image, double t);

} // namespace kelp::scenes
