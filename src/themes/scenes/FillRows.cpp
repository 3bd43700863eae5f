#include "themes/scenes/FillRows.h"

#include <QPainter>

#include <cmath>

namespace kelp {

void scenes::fillRows(QPainter &painter, const QRectF &frame, QColor colour)
{
    const double pixel = 1 / painter.deviceTransform().m22();
    const float opacity = colour.alphaF();
    const auto fill = [&](double top, double bottom, double covered) {
        if (bottom <= top || covered <= 0)
            return;
        colour.setAlphaF(opacity * static_cast<float>(covered));
        painter.fillRect(QRectF(frame.left(), top, frame.width(), bottom - top), colour);
    };
    // The rows that it covers altogether.
    const double first = std::ceil(frame.top() / pixel) * pixel;
    const double last = std::floor(frame.bottom() / pixel) * pixel;
    if (first > last) { // it lies within one row
        fill(last, first, frame.height() / pixel);
        return;
    }
    fill(first - pixel, first, (first - frame.top()) / pixel);
    fill(first, last, 1);
    fill(last, last + pixel, (frame.bottom() - last) / pixel);
}

} // namespace kelp
