#include "overlay/CountdownRing.h"

#include "overlay/CountdownFigures.h"
#include "overlay/ThemedButton.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double side = 210;
constexpr double lineWidth = 10;
constexpr double radius = side / 2; // of the line's middle
constexpr QRectF circle(0, 0, side, side);
constexpr int labelSize = 56;
constexpr double widestLabel = 172;
/// How far the line and its smoothed edge reach beyond the circle.
constexpr double reach = lineWidth / 2 + 1;

/// The arc is drawn in pieces that stay as they are while its end moves through the last one: curves of another length
/// are smoothed differently, and then it would not do to paint only what has moved.
constexpr double piece = 1.0 / 60;

/// At most twenty times a second, and not before the arc's end has moved by as much as one can see.
constexpr double shortestStep = 0.05;
constexpr double visiblePixels = 0.5;

QPen linePen(const QColor &colour, Qt::PenCapStyle caps)
{
    return {colour, lineWidth, Qt::SolidLine, caps};
}

void paintTrack(QPainter &painter, const QColor &colour)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(linePen(colour, Qt::FlatCap));
    painter.drawEllipse(circle);
}

void paintArc(QPainter &painter, double progress, const QColor &colour)
{
    if (progress <= 0)
        return;
    QPainterPath path;
    path.arcMoveTo(circle, 90); // twelve o'clock, and clockwise from there
    for (int i = 0; i * piece < progress; ++i)
        path.arcTo(circle, 90 - 360 * i * piece, -360 * std::min(piece, progress - i * piece));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(linePen(colour, Qt::RoundCap));
    painter.drawPath(path);
}

/// Of the arc that is left at `progress`.
QPointF arcEnd(double progress)
{
    const double angle = 2 * std::numbers::pi * progress;
    return circle.center() + radius * QPointF(std::sin(angle), -std::cos(angle));
}

} // namespace

QString CountdownRing::label(double remaining)
{
    if (remaining > -startingSeconds && remaining <= 0)
        return u"now"_s;
    return (remaining < 0 ? u"+"_s : QString()) + minutesAndSeconds(wholeSeconds(std::abs(remaining)));
}

QString CountdownRing::caption(double remaining)
{
    if (remaining > 0)
        return u"until start"_s;
    return remaining > -startingSeconds ? u"starting"_s : u"since start"_s;
}

double CountdownRing::untilNextLabel(double remaining)
{
    // Half a second after every whole one, but for the two ends of "now"; just past it, it has happened for certain.
    constexpr double past = 0.005;
    if (remaining <= 0 && remaining > -startingSeconds)
        return remaining + startingSeconds + past;
    const double turn = std::round(remaining) - 0.5;
    return remaining - (remaining > 0 ? std::max(0.0, turn) : turn) + past;
}

double CountdownRing::progress(Instant now) const
{
    return std::clamp((start - now) / total, 0.0, 1.0);
}

Element CountdownRing::element(Instant now) const
{
    const double remaining = start - now;
    const auto track = [colour = faded(theme.text, 0.12)](QPainter &painter, Instant) { paintTrack(painter, colour); };
    const Element caption =
        text(CountdownRing::caption(remaining)).font(designFont(theme.font, 15)).colour(faded(theme.text, 0.55));
    return layered({drawing(circle.size(), reach, {track}),
                    glowing(12, faded(theme.accent, theme.glow ? 0.8 : 0), arc()),
                    vertical(2, {figures(remaining), caption})});
}

/// Hours away or ago, the label is set smaller so that it stays within the ring.
Element CountdownRing::figures(double remaining) const
{
    const auto sized = [&](int size) -> Element {
        return text(label(remaining))
            .font(designFont(theme.countdownFont, size, QFont::DemiBold))
            .colour(theme.text)
            .fixedDigits();
    };
    const Element whole = sized(labelSize);
    const double width = whole.arrange(side).size().width();
    return width <= widestLabel ? whole : sized(static_cast<int>(labelSize * widestLabel / width));
}

Element CountdownRing::arc() const
{
    return drawing(
        circle.size(), reach,
        {.paint = [ring = *this](QPainter &painter,
                                 Instant now) { paintArc(painter, ring.progress(now), ring.theme.accent); },
         .untilChange = [ring = *this](Instant now, double density) { return ring.untilArcMoves(now, density); },
         .changed = [ring = *this](Instant from, Instant to) { return ring.movedArc(from, to); }});
}

double CountdownRing::untilArcMoves(Instant now, double density) const
{
    const double remaining = start - now;
    if (remaining <= 0)
        return std::numeric_limits<double>::infinity();
    const double pixelsPerSecond = 2 * std::numbers::pi * radius * density / total;
    const double step = std::max(shortestStep, visiblePixels / pixelsPerSecond);
    // No later than the start, when the rest of it goes at once.
    return std::max(remaining - total, 0.0) + std::clamp(std::min(remaining, total), 0.001, step);
}

QRectF CountdownRing::movedArc(Instant from, Instant to) const
{
    const double before = progress(from);
    const double after = progress(to);
    if (before == after)
        return {};
    const double first = std::max(0.0, std::floor(std::min(before, after) / piece - 0.001)) * piece;
    const double last = std::max(before, after);
    if (last - first > 0.1)
        return circle.adjusted(-reach, -reach, reach, reach);
    // The two ends, and how far the circle bulges between them.
    const double margin = reach + radius * (1 - std::cos(std::numbers::pi * (last - first)));
    const QPointF a = arcEnd(first);
    const QPointF b = arcEnd(last);
    return QRectF(a, b).normalized().adjusted(-margin, -margin, margin, margin);
}

} // namespace kelp
