#include "overlay/Entrance.h"

#include "ui/Blur.h"

#include <QImage>
#include <QPainter>

#include <algorithm>

namespace kelp {

namespace {

constexpr Spring spring{0.7, 0.75};
constexpr double delay = 0.05; // seconds
constexpr double leastScale = 0.94;
constexpr double greatestBlur = 8; // points
/// A blur of so few pixels cannot be told from none.
constexpr double leastBlur = 0.6;

} // namespace

Entrance Entrance::at(double seconds)
{
    return {seconds < duration() ? spring.position(seconds - delay) : 1};
}

double Entrance::duration()
{
    return delay + spring.settlingTime();
}

QTransform Entrance::transform(const QRectF &frame) const
{
    const double scale = leastScale + (1 - leastScale) * part;
    const QPointF centre = frame.center();
    return QTransform::fromTranslate(-centre.x(), -centre.y()) * QTransform::fromScale(scale, scale) *
           QTransform::fromTranslate(centre.x(), centre.y());
}

void Entrance::paint(QPainter &painter, const QRectF &frame, const QImage &card, double opacity) const
{
    const double shown = std::clamp(part, 0.0, 1.0);
    if (shown == 0)
        return;
    painter.setOpacity(opacity * shown);
    painter.setTransform(transform(frame), true);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const double radius = greatestBlur * (1 - shown) * card.devicePixelRatio();
    if (radius < leastBlur) {
        painter.drawImage(frame.topLeft(), card);
        return;
    }
    // A blurred picture has no detail to lose: one of half the size or less will do.
    const int coarse = std::max(1, static_cast<int>(radius / 2));
    const QImage sharp = card.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage small =
        coarse == 1 ? sharp : sharp.scaled(sharp.size() / coarse, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    painter.drawImage(frame, blurred(small, radius / coarse));
}

} // namespace kelp
