#include "themes/BandedRegion.h"
#include "themes/Scatter.h"
#include "themes/scenes/Scenes.h"

#include <QPainter>

#include <cmath>
#include <vector>

namespace kelp {

namespace {

constexpr int stars = 260;

QRectF frameOf(int star, const QSizeF &size)
{
    const double diameter = 0.6 + 1.8 * scatter(star, 234.699); // points
    return {size.width() * scatter(star, 78.233), size.height() * scatter(star, 156.466), diameter, diameter};
}

} // namespace

void scenes::paintStarfield(QPainter &painter, const QSizeF &size, double t)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF clip = painter.hasClipping() ? painter.clipBoundingRect() : QRectF(QPointF(), size);
    for (int i = 0; i < stars; ++i) {
        const QRectF frame = frameOf(i, size);
        if (!clip.intersects(frame))
            continue;
        const double speed = 0.6 + 2.2 * scatter(i, 312.932);
        const double phase = 6.28 * scatter(i, 391.165);
        const double opacity = 0.25 + 0.75 * (0.5 + 0.5 * std::sin(phase + speed * t));
        painter.setBrush(QColor::fromRgbF(1, 1, 1, static_cast<float>(opacity)));
        painter.drawEllipse(frame);
    }
    painter.restore();
}

QRegion scenes::starfieldPart(const QSizeF &size)
{
    std::vector<QRectF> frames;
    for (int i = 0; i < stars; ++i)
        frames.push_back(frameOf(i, size).adjusted(-1, -1, 1, 1)); // whole pixels at every density
    return bandedRegion(frames, QRectF(QPointF(), size).toAlignedRect());
}

} // namespace kelp
