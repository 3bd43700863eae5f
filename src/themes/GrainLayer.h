#pragma once

#include <QSizeF>

class QPainter;

namespace kelp {

/// Film grain: 6000 dots whose pattern is always the same and stretches with the view.
struct GrainLayer
{
    static void paint(QPainter &painter, const QSizeF &size);
};

} // namespace kelp
