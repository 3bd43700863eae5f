#include "capture/Wallpaper.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>
#include <numbers>

namespace kelp {

namespace {

/// A long wave: its mean height and swing as parts of the view's height, its length as part of the width.
struct Swell
{
    double height;
    double swing;
    double length;
    double phase;
    QColor top;
    QColor bottom;
};

void paintSwell(QPainter &painter, const QSizeF &size, const Swell &swell)
{
    QPainterPath path;
    constexpr double step = 8; // points
    for (double x = 0; x <= size.width() + step; x += step) {
        const double turn = 2 * std::numbers::pi * (x / (size.width() * swell.length) + swell.phase);
        const double y =
            size.height() * (swell.height + swell.swing * (std::sin(turn) + 0.35 * std::sin(1.7 * turn + 1)));
        if (x == 0)
            path.moveTo(x, y);
        else
            path.lineTo(x, y);
    }
    path.lineTo(size.width(), size.height());
    path.lineTo(0, size.height());
    path.closeSubpath();
    QLinearGradient colour(0, size.height() * (swell.height - swell.swing), 0, size.height());
    colour.setColorAt(0, swell.top);
    colour.setColorAt(1, swell.bottom);
    painter.fillPath(path, colour);
}

} // namespace

void paintWallpaper(QPainter &painter, const QSizeF &size)
{
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, size.height() * 0.6);
    sky.setColorAt(0, QColor(122, 178, 204));
    sky.setColorAt(0.55, QColor(188, 215, 214));
    sky.setColorAt(1, QColor(250, 224, 196));
    painter.fillRect(QRectF({}, size), sky);

    const QPointF sun(size.width() * 0.79, size.height() * 0.36);
    QRadialGradient light(sun, size.height() * 0.5);
    light.setColorAt(0, QColor(255, 236, 200, 230));
    light.setColorAt(0.3, QColor(255, 226, 184, 110));
    light.setColorAt(1, QColor(255, 226, 184, 0));
    painter.fillRect(QRectF({}, size), light);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 243, 217));
    painter.drawEllipse(sun, 46, 46);

    paintSwell(painter, size, {0.50, 0.012, 1.3, 0.10, QColor(150, 202, 205), QColor(64, 140, 162)});
    paintSwell(painter, size, {0.58, 0.018, 1.0, 0.45, QColor(104, 178, 190), QColor(38, 112, 142)});
    paintSwell(painter, size, {0.68, 0.022, 0.9, 0.80, QColor(62, 147, 168), QColor(22, 86, 120)});
    paintSwell(painter, size, {0.79, 0.024, 1.1, 0.25, QColor(36, 116, 146), QColor(12, 62, 96)});
    paintSwell(painter, size, {0.90, 0.020, 0.8, 0.60, QColor(22, 88, 122), QColor(6, 40, 70)});
}

} // namespace kelp
