#include "themes/Pieces.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace kelp {

namespace {

/// Qt hands a picture to another thread for every so many pixels (qrasterpaintengine, 6.2 and later).
constexpr int pixelsPerThread = 1 << 16;

/// Clips to the very pixels that `piece` touches: at a density like 1.25 a clip in points would leave some of them out.
void clip(QPainter &painter, const QRect &piece, double density, Qt::ClipOperation operation)
{
    if (density == std::floor(density)) {
        painter.setClipRect(piece, operation);
        return;
    }
    const QTransform world = painter.worldTransform();
    painter.setWorldTransform(QTransform::fromScale(1 / density, 1 / density) * world);
    painter.setClipRect(QRectF(QPointF(piece.topLeft()) * density, QSizeF(piece.size()) * density).toAlignedRect(),
                        operation);
    painter.setWorldTransform(world);
}

template<typename Pieces>
void forEach(QPainter &painter, const Pieces &pieces, const std::function<void(const QRectF &)> &paint)
{
    const double density = painter.device()->devicePixelRatioF();
    const bool isClipped = painter.hasClipping();
    painter.save();
    for (const QRect &piece : pieces) {
        if (isClipped) {
            painter.restore();
            painter.save();
        }
        clip(painter, piece, density, isClipped ? Qt::IntersectClip : Qt::ReplaceClip);
        paint(piece);
    }
    painter.restore();
}

} // namespace

void forEachPiece(QPainter &painter, const QRegion &part, const std::function<void(const QRectF &)> &paint)
{
    forEach(painter, part, paint);
}

void forEachSmallPiece(QPainter &painter, const QRegion &part, const std::function<void(const QRectF &)> &paint)
{
    const double density = painter.device()->devicePixelRatioF();
    std::vector<QRect> pieces;
    for (const QRect &each : part) {
        // Less than twice as many is not yet divided.
        const double rows = (2 * pixelsPerThread - 1) / (each.width() * density * density);
        const int height = std::max(1, static_cast<int>(rows));
        for (int top = each.top(); top <= each.bottom(); top += height)
            pieces.emplace_back(each.left(), top, each.width(), std::min(height, each.bottom() + 1 - top));
    }
    forEach(painter, pieces, paint);
}

} // namespace kelp
