#pragma once

#include <QRectF>
#include <QRegion>

#include <functional>

class QPainter;

namespace kelp {

/// Calls `paint` with rectangles (points, the edges of pixels) that together are all pixels that `part` (points)
/// touches, each of them once, while `painter` is clipped to that rectangle. One after the other, because Qt clips to a
/// single rectangle for nothing: a region of many costs it a table of spans, megabytes large, with every frame, and
/// what it blends through that it hands out to other threads.
void forEachPiece(QPainter &painter, const QRegion &part, const std::function<void(const QRectF &)> &paint);

/// The same for what is a picture: the pieces are so small that Qt blends each where it is told to. Larger ones it
/// hands to several threads, and to wake those takes more of the processor than the blending.
void forEachSmallPiece(QPainter &painter, const QRegion &part, const std::function<void(const QRectF &)> &paint);

/// Whether two rectangles have some area in common.
[[nodiscard]] inline bool overlap(const QRectF &one, const QRectF &other)
{
    return one.left() < other.right() && other.left() < one.right() && one.top() < other.bottom() &&
           other.top() < one.bottom();
}

} // namespace kelp
