#include "themes/AnimatedLayer.h"

#include "themes/Pieces.h"
#include "themes/scenes/Scenes.h"

namespace kelp {

namespace {

constexpr double referenceDate = 978307200; // 2001-01-01 00:00 UTC, in seconds since 1970
constexpr double stillTime = 40;

} // namespace

double AnimatedLayer::time(Instant shown) const
{
    return animate ? shown.secondsSince1970 - referenceDate : stillTime;
}

double AnimatedLayer::leastInterval() const
{
    switch (kind) {
    case AnimatedKind::Synthwave:
        return 1.0 / 30;
    case AnimatedKind::Rain:
    case AnimatedKind::Scanlines:
        return 1.0 / 20;
    case AnimatedKind::Starfield: // the fastest star takes 34 frames from bright to bright
    case AnimatedKind::Aurora:
        return 1.0 / 15; // each shown for as long as the next: displays show 60 a second
    case AnimatedKind::Fog:
        return 1.0 / 8;
    }
    return 1.0 / 30;
}

double AnimatedLayer::softInterval() const
{
    switch (kind) {
    case AnimatedKind::Rain:
        return 3 * leastInterval(); // lights sway slower than fog drifts
    case AnimatedKind::Starfield:
        return 2 * leastInterval();
    default:
        return 1.0 / 8;
    }
}

void AnimatedLayer::paintSoft(SoftImage &image, double t) const
{
    switch (kind) {
    case AnimatedKind::Aurora:
        return scenes::paintAurora(image, t);
    case AnimatedKind::Starfield:
        return;
    case AnimatedKind::Scanlines:
        return scenes::paintPhosphor(image, t);
    case AnimatedKind::Rain:
        return scenes::paintBokeh(image, t);
    case AnimatedKind::Synthwave:
        return scenes::paintDusk(image);
    case AnimatedKind::Fog:
        return scenes::paintFog(image, t);
    }
}

bool AnimatedLayer::isSoftStill() const
{
    return kind == AnimatedKind::Synthwave || kind == AnimatedKind::Starfield;
}

void AnimatedLayer::paintSharp(QPainter &painter, const QSizeF &size, double t, const QRegion &part) const
{
    switch (kind) {
    case AnimatedKind::Aurora:
        return forEachPiece(painter, part, [&](const QRectF &) { scenes::paintNightStars(painter, size, t); });
    case AnimatedKind::Starfield:
        return scenes::paintStarfield(painter, size, t, part);
    case AnimatedKind::Scanlines:
        return forEachPiece(painter, part, [&](const QRectF &) { scenes::paintScanlines(painter, size, t); });
    case AnimatedKind::Rain:
        return scenes::paintRain(painter, size, t, part);
    case AnimatedKind::Synthwave:
        return forEachPiece(painter, part, [&](const QRectF &) { scenes::paintFloorRows(painter, size, t); });
    case AnimatedKind::Fog:
        return;
    }
}

void AnimatedLayer::paintStill(QPainter &painter, const QSizeF &size) const
{
    if (kind == AnimatedKind::Aurora)
        scenes::paintNightForest(painter, size);
    else if (kind == AnimatedKind::Synthwave)
        scenes::paintSunset(painter, size);
}

QRectF AnimatedLayer::stillPart(const QSizeF &size) const
{
    if (kind == AnimatedKind::Aurora)
        return scenes::nightForestPart(size);
    return kind == AnimatedKind::Synthwave ? QRectF(QPointF(), size) : QRectF();
}

QRegion AnimatedLayer::sharpPart(const QSizeF &size, double t) const
{
    switch (kind) {
    case AnimatedKind::Starfield:
        return scenes::starfieldPart(size);
    case AnimatedKind::Rain:
        return scenes::rainPart(size, t);
    case AnimatedKind::Fog:
        return {};
    case AnimatedKind::Aurora:
    case AnimatedKind::Scanlines:
    case AnimatedKind::Synthwave:
        return movingPart(size).toAlignedRect();
    }
    return {};
}

QRectF AnimatedLayer::movingPart(const QSizeF &size) const
{
    const QRectF whole(QPointF(), size);
    return kind == AnimatedKind::Synthwave ? scenes::synthwaveMovingPart(size) : whole;
}

} // namespace kelp
