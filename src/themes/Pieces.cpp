#include "themes/Pieces.h"

#include <QPainter>

#include <algorithm>
#include <vector>

namespace kelp {

namespace {

/// Qt hands a picture to another thread for every so many pixels (qrasterpaintengine, 6.2 and later).
constexpr int pixelsPerThread = 1 << 16;

/// The pixels that `part` (points) touches. One region, because at a density like 1.25 two rectangles side by side
/// touch the same pixels where they meet: what is translucent would be painted twice there.
QRegion pixelsOf(const QRegion &part, double density)
{
    if (density == 1)
        return part;
    QRegion pixels;
    for (const QRect &each : part)
        pixels += QRectF(QPointF(each.topLeft()) * density, QSizeF(each.size()) * density).toAlignedRect();
    return pixels;
}

/// In points, `density` pixels each.
QRectF inPoints(const QRect &pixels, double density)
{
    return {QPointF(pixels.topLeft()) / density, QSizeF(pixels.size()) / density};
}

void clip(QPainter &painter, const QRect &pixels, double density, Qt::ClipOperation operation)
{
    const QTransform world = painter.worldTransform();
    painter.setWorldTransform(QTransform::fromScale(1 / density, 1 / density) * world);
    painter.setClipRect(pixels, operation);
    painter.setWorldTransform(world);
}

template<typename Pieces>
void forEach(QPainter &painter, const Pieces &pieces, double density, const std::function<void(const QRectF &)> &paint)
{
    const bool isClipped = painter.hasClipping();
    painter.save();
    for (const QRect &piece : pieces) {
        if (isClipped) {
            painter.restore();
            painter.save();
        }
        clip(painter, piece, density, isClipped ? Qt::IntersectClip : Qt::ReplaceClip);
        paint(inPoints(piece, density));
    }
    painter.restore();
}

} // namespace

void forEachPiece(QPainter &painter, const QRegion &part, const std::function<void(const QRectF &)> &paint)
{
    const double density = painter.device()->devicePixelRatioF();
    forEach(painter, pixelsOf(part, density), density, paint);
}

void forEachSmallPiece(QPainter &painter, const QRegion &part, const std::function<void(const QRectF &)> &paint)
{
    const double density = painter.device()->devicePixelRatioF();
    std::vector<QRect> pieces;
    for (const QRect &each : pixelsOf(part, density)) {
        // Less than twice as many is not yet divided.
        const int height = std::max(1, (2 * pixelsPerThread - 1) / each.width());
        for (int top = each.top(); top <= each.bottom(); top += height)
            pieces.emplace_back(each.left(), top, each.width(), std::min(height, each.bottom() + 1 - top));
    }
    forEach(painter, pieces, density, paint);
}

} // namespace kelp
