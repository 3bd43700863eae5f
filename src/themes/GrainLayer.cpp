#include "themes/GrainLayer.h"

#include "themes/Scatter.h"

#include <QColor>
#include <QPainter>

namespace kelp {

namespace {

constexpr int dots = 6000;
constexpr double side = 1.5; // points

} // namespace

void GrainLayer::paint(QPainter &painter, const QSizeF &size)
{
    const QColor dark = QColor::fromRgbF(0, 0, 0, 0.06F);
    const QColor light = QColor::fromRgbF(1, 1, 1, 0.25F);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < dots; ++i) {
        const QPointF corner(size.width() * scatter(i, 547.631), size.height() * scatter(i, 625.864));
        painter.setBrush(scatter(i, 704.097) > 0.5 ? dark : light);
        painter.drawRect(QRectF(corner, QSizeF(side, side)));
    }
    painter.restore();
}

} // namespace kelp
