#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

namespace kelp::scenes {

/// Fills `frame` (points) by whole rows of pixels; only its upper and lower edges are blended, its sides lie between
/// two pixels. A smooth polygon looks the same and costs several times as much.
void fillRows(QPainter &painter, const QRectF &frame, QColor colour);

} // namespace kelp::scenes
