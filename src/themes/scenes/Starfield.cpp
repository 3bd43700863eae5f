#include "themes/BandedRegion.h"
#include "themes/Pieces.h"
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

double opacityOf(int star, double t)
{
    const double speed = 0.6 + 2.2 * scatter(star, 312.932);
    const double phase = 6.28 * scatter(star, 391.165);
    return 0.25 + 0.75 * (0.5 + 0.5 * std::sin(phase + speed * t));
}

/// By their numbers.
std::vector<QRectF> framesOf(const QSizeF &size)
{
    std::vector<QRectF> frames;
    for (int i = 0; i < stars; ++i)
        frames.push_back(frameOf(i, size));
    return frames;
}

} // namespace

void scenes::paintStarfield(QPainter &painter, const QSizeF &size, double t, const QRegion &part)
{
    const std::vector<QRectF> frames = framesOf(size);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    forEachPiece(painter, part, [&](const QRectF &piece) {
        const QRectF near = piece.adjusted(-1, -1, 1, 1); // whole pixels at every density
        for (int i = 0; i < stars; ++i) {
            const QRectF &frame = frames[static_cast<std::size_t>(i)];
            if (overlap(frame, near)) {
                painter.setBrush(QColor::fromRgbF(1, 1, 1, static_cast<float>(opacityOf(i, t))));
                painter.drawEllipse(frame);
            }
        }
    });
    painter.restore();
}

QRegion scenes::starfieldPart(const QSizeF &size)
{
    std::vector<QRectF> frames = framesOf(size);
    for (QRectF &frame : frames)
        frame.adjust(-1, -1, 1, 1); // whole pixels at every density
    return bandedRegion(frames, QRectF(QPointF(), size).toAlignedRect());
}

} // namespace kelp
