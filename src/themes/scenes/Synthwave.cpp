#include "themes/Scatter.h"
#include "themes/SoftImage.h"
#include "themes/scenes/FillRows.h"
#include "themes/scenes/Scenes.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <array>
#include <cmath>

namespace kelp {

namespace {

constexpr double horizon = 0.772; // of the height
constexpr double sunMiddle = 0.525;
constexpr double sunRadius = 0.405;
constexpr double highestCard = 460; // points, with a title of three lines
constexpr double rowsPerSecond = 0.55;

Floats mixed(const Floats &a, const Floats &b, double part)
{
    return a + (b - a) * static_cast<float>(std::clamp(part, 0.0, 1.0));
}

double smooth(double from, double to, double value)
{
    const double way = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return way * way * (3 - 2 * way);
}

/// A gap in the sun, between two heights below its middle; faint where the card's text crosses it.
void paintGap(QPainter &painter, const QPointF &middle, double radius, double top, double bottom)
{
    const auto half = [&](double height) { return std::sqrt(std::max(0.0, radius * radius - height * height)) + 0.5; };
    QLinearGradient dark(middle.x() - radius, 0, middle.x() + radius, 0);
    const QColor edge(64, 6, 74);
    const QColor centre(64, 6, 74, 60);
    dark.setColorAt(0, edge);
    dark.setColorAt(0.1, edge);
    dark.setColorAt(0.38, centre);
    dark.setColorAt(0.62, centre);
    dark.setColorAt(0.9, edge);
    dark.setColorAt(1, edge);
    painter.setBrush(dark);
    const auto corner = [&](double side, double height) { return middle + QPointF(side * half(height), height); };
    painter.drawPolygon(QPolygonF({corner(-1, top), corner(1, top), corner(1, bottom), corner(-1, bottom)}));
}

/// A disc cut by gaps that widen downwards. It shines above the card; where white text can lie it is dim enough for it.
void paintSun(QPainter &painter, const QSizeF &size)
{
    const double radius = sunRadius * size.height();
    const QPointF middle(size.width() / 2, sunMiddle * size.height());
    const double bright = size.height() / 2 - highestCard / 2 - (middle.y() - radius);
    const double shine = std::clamp(bright / (2 * radius), 0.06, 0.17); // as a part of the sun's height
    QLinearGradient colours(0, middle.y() - radius, 0, middle.y() + radius);
    colours.setColorAt(0, QColor(255, 206, 92));
    colours.setColorAt(0.3 * shine, QColor(255, 152, 84));
    colours.setColorAt(0.65 * shine, QColor(222, 74, 96));
    colours.setColorAt(shine, QColor(160, 30, 92));
    colours.setColorAt(1.5 * shine, QColor(118, 15, 84));
    colours.setColorAt(0.55, QColor(98, 10, 88));
    colours.setColorAt(1, QColor(84, 10, 108));
    painter.setBrush(colours);
    painter.drawEllipse(middle, radius, radius);
    // The rim shines: below, the sun is no brighter than the sky around it. White text may cross it.
    QRadialGradient rim(middle, radius);
    rim.setColorAt(0.84, QColor(238, 64, 160, 0));
    rim.setColorAt(0.96, QColor(238, 64, 160, 34));
    rim.setColorAt(0.985, QColor(238, 64, 160, 62));
    rim.setColorAt(1, QColor(238, 64, 160, 86));
    painter.setBrush(rim);
    painter.drawEllipse(middle, radius, radius);
    // The top stays golden up to its edge.
    QLinearGradient crown(colours.start(), colours.finalStop());
    crown.setColorAt(0, QColor(255, 206, 92, 255));
    crown.setColorAt(0.3 * shine, QColor(255, 152, 84, 210));
    crown.setColorAt(0.8 * shine, QColor(200, 56, 94, 0));
    painter.setBrush(crown);
    painter.drawEllipse(middle, radius, radius);
    constexpr int gaps = 6;
    for (int i = 0; i < gaps; ++i) {
        const double height = radius * (-0.1 + 0.125 * i);
        const double thick = radius * (0.008 + 0.0095 * i);
        paintGap(painter, middle, radius, height - thick / 2, height + thick / 2);
    }
}

/// A range of mountains on both sides that leaves the sun free.
struct Range
{
    double height; ///< of the view's
    int peaks;     ///< across the view
    int seed;
    QColor lit;    ///< the slopes that face the sun
    QColor shaded; ///< those that turn away from it
    QColor edge;
};

/// The crest: summits and saddles by turns, from left to right.
QPolygonF crest(const Range &range, const QSizeF &size)
{
    QPolygonF points;
    const int count = 2 * range.peaks;
    for (int i = 0; i <= count; ++i) {
        const double u = (i + 0.7 * (scatter(i, range.seed * 7.3) - 0.5)) / count;
        const double away = smooth(0.3, 1.02, std::abs(u - 0.5) * 2);
        const bool summit = i % 2 == 1;
        const double chance = scatter(i, range.seed * 13.7);
        const double rise = away * (summit ? 0.55 + 0.45 * chance : 0.16 + 0.26 * chance);
        points.append({u * size.width() * 1.04 - 0.02 * size.width(), (horizon - range.height * rise) * size.height()});
    }
    return points;
}

/// Every mountain is a few flat faces, bright towards the sun and dark away from it, with light along the edges.
void paintRange(QPainter &painter, const QSizeF &size, const Range &range)
{
    const double ground = horizon * size.height();
    const QPolygonF points = crest(range, size);
    const auto face = [&](const QPolygonF &corners, const QColor &colour) {
        QLinearGradient fade(0, (horizon - range.height) * size.height(), 0, ground);
        fade.setColorAt(0, colour);
        fade.setColorAt(1, QColor(24, 5, 44));
        painter.setBrush(fade);
        painter.setPen(QPen(fade, 0.7)); // closes the seams between faces
        painter.drawPolygon(corners);
    };
    const auto wire = [&](const QPointF &from, const QPointF &to, double opacity) {
        QColor colour = range.edge;
        colour.setAlphaF(static_cast<float>(colour.alphaF() * opacity));
        QLinearGradient fade(from, to);
        fade.setColorAt(0, colour);
        colour.setAlphaF(colour.alphaF() * 0.15F);
        fade.setColorAt(1, colour);
        painter.setPen(QPen(fade, 1));
        painter.drawLine(from, to);
    };
    for (int i = 1; i + 1 < points.size(); i += 2) {
        const QPointF left = points[i - 1];
        const QPointF summit = points[i];
        const QPointF right = points[i + 1];
        const bool sunOnRight = summit.x() < size.width() / 2;
        // A spur runs down from the summit and parts each slope into an upper and a lower face.
        const double lean = (scatter(i, range.seed * 3.1) - 0.5) * 0.5;
        const QPointF spur(summit.x() + lean * (right.x() - left.x()), ground);
        const auto slope = [&](const QPointF &saddle, bool lit) {
            const QColor colour = lit ? range.lit : range.shaded;
            const QPointF knee = (saddle + spur) / 2 + QPointF(0, (ground - saddle.y()) * -0.12);
            face({summit, saddle, knee}, lit ? colour.lighter(118) : colour.darker(112));
            face({summit, knee, spur}, colour);
            face({saddle, {saddle.x(), ground}, spur, knee}, colour.darker(130));
            wire(summit, knee, 0.55);
            wire(saddle, knee, 0.4);
            wire(summit, saddle, 1);
        };
        slope(left, !sunOnRight);
        slope(right, sunOnRight);
        wire(summit, spur, 0.8);
    }
}

void paintMountains(QPainter &painter, const QSizeF &size)
{
    const double wide = size.width() / size.height() / 1.6; // as many more as there is room for
    const auto peaks = [&](double count) { return std::max(4, static_cast<int>(std::lround(count * wide))); };
    paintRange(painter, size,
               {0.235, peaks(12), 5, QColor(120, 26, 112), QColor(52, 14, 86), QColor(255, 110, 210, 80)});
    paintRange(painter, size, {0.105, peaks(17), 8, QColor(72, 14, 92), QColor(26, 6, 54), QColor(96, 214, 255, 120)});
    painter.setPen(Qt::NoPen);
}

QColor lineColour(double near, double opacity)
{
    const auto way = static_cast<float>(std::clamp(near, 0.0, 1.0));
    return QColor::fromRgbF(1 - 0.72F * way, 0.22F + 0.46F * way, 0.72F + 0.28F * way, static_cast<float>(opacity));
}

/// The lines of the floor that run to the vanishing point.
void paintFloorLines(QPainter &painter, const QSizeF &size)
{
    const double top = horizon * size.height();
    const double middle = size.width() / 2;
    const double pitch = size.height() * 0.16;
    const int lines = static_cast<int>(size.width() / 2 / pitch * 12) + 1;
    QLinearGradient fade(0, top, 0, size.height());
    fade.setColorAt(0, lineColour(0, 0.1));
    fade.setColorAt(0.2, lineColour(0.2, 0.5));
    fade.setColorAt(1, lineColour(1, 0.85));
    painter.setBrush(fade);
    for (int i = -lines; i <= lines; ++i) {
        const double foot = i * pitch;
        // Only as far as it is seen: what lies outside the view would be rasterized all the same.
        const double leaves = (middle + 4 - std::abs(foot) * 0.07) / std::max(1.0, std::abs(foot) * 0.93);
        const double seen = std::min(1.0, leaves);
        if (seen <= 0)
            continue;
        const double x = middle + foot * (0.07 + 0.93 * seen);
        const double half = 0.3 + 0.8 * seen;
        const double bottom = top + (size.height() - top) * seen;
        painter.drawPolygon(QPolygonF({{middle + foot * 0.07 - 0.3, top},
                                       {middle + foot * 0.07 + 0.3, top},
                                       {x + half, bottom},
                                       {x - half, bottom}}));
    }
}

/// A line across the view.
void paintRow(QPainter &painter, const QSizeF &size, double middle, double thick, const QColor &colour)
{
    scenes::fillRows(painter, QRectF(0, middle - thick / 2, size.width(), thick), colour);
}

} // namespace

void scenes::paintDusk(SoftImage &image)
{
    const Floats zenith = SoftPixel::opaque(0.035, 0.008, 0.1);
    const Floats middle = SoftPixel::opaque(0.14, 0.025, 0.25);
    const Floats low = SoftPixel::opaque(0.42, 0.06, 0.36);
    const Floats floorFar = SoftPixel::opaque(0.2, 0.03, 0.24);
    const Floats floorNear = SoftPixel::opaque(0.03, 0.005, 0.08);
    const Floats glow = SoftPixel::light(0.5, 0.08, 0.3);
    const double aspect = image.down(0) / image.across(0);
    for (int y = 0; y < image.height(); ++y) {
        const double v = image.down(y);
        const bool sky = v < horizon;
        const Floats base = sky ? mixed(mixed(zenith, middle, v / 0.5), low, smooth(0.42, horizon + 0.02, v))
                                : mixed(floorFar, floorNear, std::sqrt((v - horizon) / (1 - horizon)));
        SoftPixel *row = image.row(y);
        for (int x = 0; x < image.width(); ++x) {
            const double dx = (image.across(x) - 0.5) * aspect;
            const double dy = sky ? v - sunMiddle : (v - horizon) * 1.6 + (horizon - sunMiddle);
            const double distance = std::max(0.0, std::sqrt(dx * dx + dy * dy) - sunRadius * 0.9);
            row[x] = {base};
            row[x].add(glow * static_cast<float>(0.34 * std::exp(-distance * 6.5)));
        }
    }
}

QRectF scenes::synthwaveMovingPart(const QSizeF &size)
{
    const double top = std::floor(horizon * size.height()) - 1;
    return {0, top, size.width(), size.height() - top};
}

void scenes::paintSunset(QPainter &painter, const QSizeF &size)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    constexpr int stars = 90;
    for (int i = 0; i < stars; ++i) {
        const double diameter = 0.8 + 1.2 * scatter(i, 19.3);
        const double v = 0.6 * scatter(i, 29.1);
        painter.setBrush(QColor::fromRgbF(1, 0.85F, 1, static_cast<float>(0.7 * scatter(i, 37.7) * (1 - v / 0.62))));
        painter.drawEllipse(QRectF(size.width() * scatter(i, 43.3), size.height() * v, diameter, diameter));
    }
    painter.setClipRect(QRectF(0, 0, size.width(), horizon * size.height()));
    paintSun(painter, size);
    paintMountains(painter, size);
    painter.setClipRect(QRectF(QPointF(), size));
    const double line = horizon * size.height();
    for (const double reach : {9.0, 4.5, 1.6})
        painter.fillRect(QRectF(0, line - reach / 2, size.width(), reach), QColor(255, 120, 220, reach < 2 ? 190 : 30));
    painter.setClipRect(QRectF(0, line, size.width(), size.height()));
    // Where the rows lie too close together to be told apart, they are one light.
    QLinearGradient haze(0, line, 0, line + 0.04 * size.height());
    haze.setColorAt(0, QColor(208, 48, 150, 90));
    haze.setColorAt(0.35, QColor(208, 48, 150, 56));
    haze.setColorAt(1, QColor(208, 48, 150, 0));
    painter.fillRect(QRectF(0, line, size.width(), 0.04 * size.height()), haze);
    paintFloorLines(painter, size);
    painter.restore();
}

void scenes::paintFloorRows(QPainter &painter, const QSizeF &size, double t)
{
    const double top = horizon * size.height();
    const double depth = size.height() - top;
    constexpr int rows = 44;
    const double moved = fract(t * rowsPerSecond);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setClipRect(synthwaveMovingPart(size), Qt::IntersectClip);
    for (int i = 0; i < rows; ++i) {
        const double near = 1 / (1 + (i + 1 - moved) * 0.36 - 0.36);
        const double fade = smooth(0.045, 0.3, near);
        const double thick = 0.5 + 1.9 * near;
        paintRow(painter, size, top + depth * near, 5 * thick, lineColour(near, 0.09 * fade));
        paintRow(painter, size, top + depth * near, thick, lineColour(near, 0.9 * fade));
    }
    painter.restore();
}

} // namespace kelp
