#include "themes/BandedRegion.h"
#include "themes/Pieces.h"
#include "themes/Scatter.h"
#include "themes/SoftImage.h"
#include "themes/scenes/BehindCard.h"
#include "themes/scenes/Scenes.h"

#include <QLineF>
#include <QPainter>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace kelp {

namespace {

constexpr int discs = 30;

/// Streaks at one distance: nearer ones are longer, faster and brighter.
struct Sheet
{
    int streaks;
    double length; ///< points
    double speed;  ///< heights of the view per second
    double width;  ///< points
    float opacity;
};

constexpr std::array<Sheet, 3> sheets{Sheet{70, 26, 0.75, 0.8, 0.16F}, Sheet{40, 44, 1.05, 1.1, 0.2F},
                                      Sheet{16, 74, 1.45, 1.5, 0.22F}};

constexpr double slant = -0.085; // points sideways per point downwards

constexpr double waist = 0.45; // how much of a streak is its bright head

/// A streak at one moment.
struct Streak
{
    QPointF head;
    double length; ///< downwards, in points
    double seen;   ///< 0…1

    [[nodiscard]] QPointF along(double part) const
    {
        return {head.x() - slant * length * part, head.y() - length * part};
    }
};

/// Pixels: Qt hands lines longer than a few of these to several threads, and waking them costs more than the drawing.
constexpr double longestPiece = 20;

using Lines = QVarLengthArray<QLineF, 192>;

/// From one part of a streak to another, in pieces.
void append(Lines &lines, const Streak &streak, double from, double to, double density)
{
    const double pieces = std::ceil((to - from) * streak.length * density / longestPiece);
    for (double piece = 0; piece < pieces; ++piece) {
        lines.append(QLineF(streak.along(from + (to - from) * (piece + 1) / pieces),
                            streak.along(from + (to - from) * piece / pieces)));
    }
}

constexpr double lowest = 0.74; // of the height
constexpr int shades = 5;

/// Rain is outside: how much of a streak is seen, 0…1, fades before it crosses what stands on the window sill, and over
/// the plant at the right sooner. `u` and `v` are parts of the view's width and height.
double seenAt(double u, double v)
{
    const double plant = std::clamp((u - 0.66) / (0.76 - 0.66), 0.0, 1.0);
    const double from = 0.5 - 0.14 * plant;
    const double to = lowest - 0.2 * plant;
    return std::clamp((to - v) / (to - from), 0.0, 1.0);
}

Streak streakOf(const Sheet &sheet, int element, const QSizeF &size, double t)
{
    const double travelled = t * sheet.speed * (0.85 + 0.3 * scatter(element, 19.19)) + scatter(element, 47.1);
    // Each fall begins at another place; the falls repeat after an hour or so.
    const int fall = static_cast<int>(std::fmod(std::floor(travelled), 4096));
    const double y = fract(travelled) * (size.height() * lowest + sheet.length);
    const double x = size.width() * 1.1 * scatter(element + 131 * fall, 83.7) + y * slant;
    return {.head = {x, y},
            .length = sheet.length * (0.7 + 0.6 * scatter(element, 103.3)),
            .seen = seenAt(x / size.width(), y / size.height())};
}

/// Streaks of one sheet that are as bright as each other, so that they are drawn at once.
struct Stroke
{
    struct Member
    {
        Streak streak;
        QRectF frame; ///< what it touches
    };
    const Sheet *sheet;
    float seen; ///< 0…1
    std::vector<Member> members;
};

/// All that are seen at `t`, far ones first.
std::vector<Stroke> strokesOf(const QSizeF &size, double t)
{
    std::vector<Stroke> strokes;
    int seed = 0;
    for (const Sheet &sheet : sheets) {
        const std::size_t first = strokes.size();
        for (int shade = 1; shade < shades; ++shade)
            strokes.push_back({&sheet, static_cast<float>(shade) / (shades - 1), {}});
        const double margin = sheet.width / 2 + 2; // the line's ends, and whole pixels at every density
        for (int i = 0; i < sheet.streaks; ++i) {
            const Streak streak = streakOf(sheet, seed + i, size, t);
            const auto shade = static_cast<std::size_t>(std::lround(streak.seen * (shades - 1)));
            if (shade > 0) {
                const QRectF frame = QRectF(streak.along(1), streak.head).normalized();
                strokes[first + shade - 1].members.push_back(
                    {streak, frame.adjusted(-margin, -margin, margin, margin)});
            }
        }
        seed += sheet.streaks;
    }
    return strokes;
}

/// All that they touch.
QRegion partOf(const std::vector<Stroke> &strokes, const QSizeF &size)
{
    std::vector<QRectF> frames;
    for (const Stroke &stroke : strokes) {
        for (const Stroke::Member &member : stroke.members)
            frames.push_back(member.frame);
    }
    return bandedRegion(frames, QRectF(QPointF(), size).toAlignedRect());
}

/// The streaks of it that touch `piece`.
void paintStroke(QPainter &painter, const Stroke &stroke, const QRectF &piece)
{
    const double density = painter.device()->devicePixelRatioF();
    Lines heads;
    Lines tails;
    for (const Stroke::Member &member : stroke.members) {
        if (overlap(member.frame, piece)) {
            append(heads, member.streak, 0, waist, density);
            append(tails, member.streak, waist, 1, density);
        }
    }
    const auto draw = [&](const Lines &lines, float opacity) {
        const QColor colour = QColor::fromRgbF(0.8F, 0.88F, 1, opacity * stroke.seen);
        painter.setPen(QPen(colour, stroke.sheet->width, Qt::SolidLine, Qt::FlatCap));
        painter.drawLines(lines.constData(), static_cast<int>(lines.size()));
    };
    if (!heads.isEmpty()) {
        draw(tails, stroke.sheet->opacity * 0.45F);
        draw(heads, stroke.sheet->opacity);
    }
}

Floats discColour(int index)
{
    const double kind = scatter(index, 211.3);
    if (kind < 0.5)
        return SoftPixel::light(1.0, 0.62, 0.28); // street lamps
    if (kind < 0.7)
        return SoftPixel::light(1.0, 0.30, 0.24); // tail lights
    if (kind < 0.88)
        return SoftPixel::light(0.28, 0.62, 0.9); // signs
    return SoftPixel::light(0.86, 0.36, 0.7);
}

void addDisc(SoftImage &image, double u, double v, double radius, const Floats &light)
{
    const double aspect = image.across(0) > 0 ? image.down(0) / image.across(0) : 1; // width ÷ height
    const int left = std::max(0, static_cast<int>((u - radius / aspect) * image.width()) - 1);
    const int right = std::min(image.width() - 1, static_cast<int>((u + radius / aspect) * image.width()) + 1);
    const int top = std::max(0, static_cast<int>((v - radius) * image.height()) - 1);
    const int bottom = std::min(image.height() - 1, static_cast<int>((v + radius) * image.height()) + 1);
    for (int y = top; y <= bottom; ++y) {
        SoftPixel *row = image.row(y);
        const auto dy = static_cast<float>((image.down(y) - v) / radius);
        for (int x = left; x <= right; ++x) {
            const auto dx = static_cast<float>((image.across(x) - u) * aspect / radius);
            const float distance = std::sqrt(dx * dx + dy * dy);
            const float edge = std::clamp((1 - distance) * 5, 0.0F, 1.0F);
            // A lens out of focus draws discs with a brighter rim.
            const float rim = 0.72F + 0.28F * distance * distance * distance;
            row[x].add(light * (edge * edge * (3 - 2 * edge) * rim));
        }
    }
}

} // namespace

void scenes::paintBokeh(SoftImage &image, double t)
{
    for (int i = 0; i < discs; ++i) {
        const double swayX = 0.012 * std::sin(t * (0.05 + 0.06 * scatter(i, 7.7)) + 6.28 * scatter(i, 13.9));
        const double swayY = 0.018 * std::sin(t * (0.04 + 0.05 * scatter(i, 17.1)) + 6.28 * scatter(i, 23.3));
        const double u = 0.02 + 0.76 * scatter(i, 31.1) + swayX; // the plant on the sill stays free
        const double v = 0.36 + 0.4 * scatter(i, 37.9) + swayY;
        const double radius = 0.022 + 0.05 * scatter(i, 53.9) * scatter(i, 59.3);
        const double breath = 0.75 + 0.25 * std::sin(t * (0.17 + 0.2 * scatter(i, 67.7)) + 6.28 * scatter(i, 73.1));
        const double calm = 1 - 0.85 * behindCard(u, v);
        addDisc(image, u, v, radius,
                discColour(i) * static_cast<float>((0.1 + 0.14 * scatter(i, 79.9)) * breath * calm));
    }
}

void scenes::paintRain(QPainter &painter, const QSizeF &size, double t, const QRegion &part)
{
    const std::vector<Stroke> strokes = strokesOf(size, t);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const auto paint = [&](const QRectF &piece) {
        for (const Stroke &stroke : strokes)
            paintStroke(painter, stroke, piece);
    };
    // With each frame of their own all of them may be painted, and once is enough for a streak.
    if ((partOf(strokes, size) - part).isEmpty())
        paint(QRectF(QPointF(), size));
    else
        forEachPiece(painter, part, paint);
    painter.restore();
}

QRegion scenes::rainPart(const QSizeF &size, double t)
{
    return partOf(strokesOf(size, t), size);
}

} // namespace kelp
