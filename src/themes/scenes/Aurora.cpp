#include "themes/Scatter.h"
#include "themes/SoftImage.h"
#include "themes/scenes/BehindCard.h"
#include "themes/scenes/Scenes.h"

#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace kelp {

namespace {

constexpr int curtains = 3;
constexpr int tableSize = 1024; // entries for a distance of 0…1 of the view's height

/// How brightly a curtain glows at a distance above its lower edge; light below the edge fades at once.
struct Falloff
{
    std::array<float, tableSize> foot{};  ///< green: near the edge
    std::array<float, tableSize> crown{}; ///< violet: higher up
    std::array<float, tableSize> below{};

    Falloff()
    {
        for (int i = 0; i < tableSize; ++i) {
            const double d = (i + 0.5) / tableSize;
            const auto at = static_cast<std::size_t>(i);
            foot[at] = static_cast<float>(0.72 * std::exp(-d * 6.5) + 0.5 * std::exp(-d * 24));
            crown[at] = static_cast<float>(1.75 * (std::exp(-d * 3.8) - std::exp(-d * 8)));
            below[at] = static_cast<float>(1.0 * std::exp(-std::pow(d * 34, 1.5)) + 0.22 * std::exp(-d * 13));
        }
    }
};

struct Column
{
    float edge; ///< the curtain's lower edge, as a part of the height
    float bright;
    float reach; ///< how high it stands, 1 = as in the table
};

Column columnOf(int curtain, double u, double t)
{
    const double k = curtain;
    const double fold = 0.075 * std::sin(u * 4.1 + t * 0.061 + k * 2.1) +
                        0.035 * std::sin(u * 9.7 - t * 0.093 + k * 4.4) + 0.012 * std::sin(u * 23 + t * 0.17 + k);
    const double along =
        u + 0.045 * std::sin(u * 6.1 + t * 0.11 + k * 1.3) + 0.02 * std::sin(u * 15.7 - t * 0.083 + k * 4);
    const double bundles = 0.5 + 0.5 * std::sin(along * 29 + t * 0.13 + k * 2.2);
    const double fine =
        0.5 + 0.25 * std::sin(along * 127 - t * 0.43 + k * 5.1) + 0.25 * std::sin(along * 83 + t * 0.37 + k);
    const double rays = 0.34 + 0.4 * bundles * (0.55 + 0.45 * fine) + 0.26 * fine;
    const double patches = 0.5 + 0.5 * std::sin(u * (3.3 + 0.9 * k) - t * (0.047 + 0.013 * k) + k * 2.6 + 0.6);
    const double reach = 0.75 + 0.3 * std::sin(u * 5.3 + t * 0.071 + k * 1.9) + 0.3 * (rays - 0.62);
    return {static_cast<float>(0.6 - 0.13 * k + fold - 0.02 * (rays - 0.6)),
            static_cast<float>(rays * (0.2 + 0.8 * std::pow(patches, 1.4))),
            static_cast<float>(1 / std::max(0.3, reach))};
}

/// A colour in 0…255.
struct Rgb
{
    float r = 0;
    float g = 0;
    float b = 0;
};

Rgb mixed(const Rgb &a, const Rgb &b, float part)
{
    return {a.r + (b.r - a.r) * part, a.g + (b.g - a.g) * part, a.b + (b.b - a.b) * part};
}

double ridge(double u, double seed)
{
    return 0.45 * std::sin(u * 4.3 + seed) + 0.3 * std::sin(u * 9.1 + seed * 2.3) +
           0.15 * std::sin(u * 19.7 + seed * 3.1);
}

/// A chain of hills, far ones first.
struct Range
{
    double level; ///< of its crest, as a part of the view's height
    double height;
    double seed;
    double soft; ///< over which height its crest fades into the air
    Rgb crest;   ///< just below the crest, where the curtains shine on it
    Rgb foot;    ///< farther down
    double mist; ///< opacity of what lies in the valley before it
};

double crestOf(const Range &range, double u)
{
    const double rough = 0.03 * std::sin(u * 61 + range.seed * 5) + 0.018 * std::sin(u * 137 + range.seed * 9);
    return range.level - range.height * (ridge(u, range.seed) + rough);
}

constexpr Range nearest{0.945, 0.022, 5.2, 0.0012, {2, 7, 11}, {1, 3, 6}, 0};
constexpr Range middle{0.897, 0.032, 3.9, 0.002, {13, 59, 58}, {3, 13, 19}, 0.5};
constexpr Range far{0.855, 0.038, 1.7, 0.003, {11, 48, 50}, {5, 18, 26}, 0.7};
constexpr Range remote{0.822, 0.024, 7.9, 0.0045, {11, 39, 44}, {6, 23, 33}, 0.75};
constexpr Rgb mistColour{22, 62, 70};

/// Smooth noise of about 0…1, wider than high.
double drift(double u, double v)
{
    return 0.5 + 0.22 * std::sin(u * 7.3 + 3.1 * std::sin(v * 31 + u * 2.3)) +
           0.16 * std::sin(u * 17.9 - v * 57 + 2 * std::sin(u * 5.1)) + 0.1 * std::sin(u * 41 + v * 113);
}

/// Where the curtains are brightest they light the land: at the sides more than behind the card.
double glowAt(double u)
{
    const double away = (u - 0.5) * 2;
    return 0.35 + 0.5 * away * away + 0.15 * std::sin(u * 9 + 0.6);
}

/// Spruces side by side on a hill, each a stack of narrowing boughs that hang a little.
void paintWood(QPainter &painter, const QSizeF &size, const Range &range, int trees, int boughs, double scale)
{
    QPolygonF ground{QPointF(0, size.height())};
    constexpr int steps = 240;
    for (int i = 0; i <= steps; ++i) {
        const double u = static_cast<double>(i) / steps;
        ground << QPointF(u * size.width(), crestOf(range, u) * size.height());
    }
    ground << QPointF(size.width(), size.height());
    painter.drawPolygon(ground);
    for (int i = 0; i < trees; ++i) {
        const double u = (i + scatter(i, 11.13 * scale)) / trees;
        // They stand in groves, with clearings between.
        const double grove = 0.5 + 0.3 * std::sin(u * 37 + range.seed) + 0.2 * std::sin(u * 83 + range.seed * 2.9);
        if (scatter(i, 61.9) > 0.25 + 1.25 * grove)
            continue;
        const double x = u * size.width();
        const double foot = (crestOf(range, u) + 0.01 * scale) * size.height();
        const double sides = std::abs(u - 0.5) * 2; // taller towards the sides: the view opens in the middle
        const double tall = size.height() * scale * (0.013 + 0.04 * scatter(i, 23.7) * (0.4 + 0.6 * grove)) *
                            (0.7 + 1.2 * sides * sides);
        const double wide = tall * (0.17 + 0.06 * scatter(i, 37.1));
        QPolygonF tree(4 * boughs + 1);
        tree[0] = QPointF(x, foot - tall);
        for (int bough = 0; bough < boughs; ++bough) {
            const double down = (bough + 1.0) / boughs;
            const double uneven = 0.8 + 0.4 * scatter(i * boughs + bough, 53.3);
            const double y = foot - tall * (1 - 0.94 * down);
            const double inner = bough + 1 < boughs ? 0.42 : 0.1;
            tree[1 + 2 * bough] = QPointF(x + wide * down * (1.6 - uneven), y + 0.02 * tall);
            tree[2 + 2 * bough] = QPointF(x + wide * down * inner, y - 0.015 * tall);
            tree[4 * boughs - 2 * bough] = QPointF(x - wide * down * uneven, y + 0.02 * tall);
            tree[4 * boughs - 1 - 2 * bough] = QPointF(x - wide * down * inner, y - 0.015 * tall);
        }
        painter.drawPolygon(tree);
    }
}

/// Hills in the air of the night, down to where `next` hides them: lit from above at their crests, and lost in mist at
/// their feet. What lies between two shades of the screen goes into a pattern, so that no bands show.
void paintRange(QPainter &painter, const QSizeF &size, const Range &range, const Range &next)
{
    const double top = std::floor((range.level - range.height - 2 * range.soft) * size.height());
    const double bottom = std::ceil(std::min(1.0, next.level + next.height + 2 * next.soft) * size.height());
    const QRectF frame(0, top, size.width(), bottom - top);
    const double density = painter.device()->devicePixelRatioF();
    QImage image((frame.size() * density).toSize().expandedTo({1, 1}), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const int width = image.width();
    std::vector<float> crests;
    std::vector<float> glows;
    for (int x = 0; x < width; ++x) {
        const double u = (x + 0.5) / width;
        crests.push_back(static_cast<float>(crestOf(range, u)));
        glows.push_back(static_cast<float>(glowAt(u)));
    }
    const auto soft = static_cast<float>(range.soft);
    const auto deepest = static_cast<float>(next.level - range.level);
    constexpr int points = 128; // of the mist in a row; between them it is straight
    std::array<float, points + 2> mist{};
    for (int y = 0; y < image.height(); ++y) {
        const double v = (frame.top() + (y + 0.5) * frame.height() / image.height()) / size.height();
        for (std::size_t i = 0; i < mist.size(); ++i)
            mist[i] = static_cast<float>(range.mist * (0.45 + 0.75 * drift(static_cast<double>(i) / points, v)));
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        const std::int16_t *pattern = SoftImage::pattern(y);
        for (int x = 0; x < width; ++x) {
            const auto column = static_cast<std::size_t>(x);
            const float below = static_cast<float>(v) - crests[column];
            if (below < -soft)
                continue;
            const float inside = std::min(1.0F, (below + soft) / (2 * soft));
            const float alpha = inside * inside * (3 - 2 * inside);
            const float lit = glows[column] / (1 + below * below * 900);
            const float deep = std::clamp(below / deepest, 0.0F, 1.0F);
            const float place = (static_cast<float>(x) + 0.5F) / static_cast<float>(width) * points;
            const auto point = static_cast<std::size_t>(place);
            const float part = place - static_cast<float>(point);
            const float veil = deep * deep * glows[column] * (mist[point] * (1 - part) + mist[point + 1] * part);
            const Rgb land = mixed(mixed(range.foot, range.crest, lit), mistColour, std::min(0.85F, veil));
            const int noise = pattern[x % SoftImage::patternSide * 4];
            const auto byte = [&](float value) { return (static_cast<int>(value * alpha * 128) + noise) >> 7; };
            const int opaque = std::min(byte(255), 255);
            line[x] = qRgba(std::min(byte(land.r), opaque), std::min(byte(land.g), opaque),
                            std::min(byte(land.b), opaque), opaque);
        }
    }
    painter.drawImage(frame, image);
}

} // namespace

void scenes::paintAurora(SoftImage &image, double t)
{
    static const Falloff falloff;
    static const std::array<Floats, curtains> feet{
        SoftPixel::light(0.14, 0.86, 0.52), SoftPixel::light(0.08, 0.78, 0.58), SoftPixel::light(0.10, 0.60, 0.74)};
    static const std::array<Floats, curtains> crowns{
        SoftPixel::light(0.13, 0.30, 0.52), SoftPixel::light(0.30, 0.20, 0.62), SoftPixel::light(0.52, 0.14, 0.60)};
    std::vector<Column> columns(static_cast<std::size_t>(image.width()) * curtains);
    for (int x = 0; x < image.width(); ++x) {
        for (int k = 0; k < curtains; ++k)
            columns[static_cast<std::size_t>(x * curtains + k)] = columnOf(k, image.across(x), t);
    }
    for (int y = 0; y < image.height(); ++y) {
        const auto v = static_cast<float>(image.down(y));
        const Floats air = SoftPixel::light(0.035, 0.2, 0.25) * (v * v * v * v * v * v); // a little over the horizon
        SoftPixel *row = image.row(y);
        const Column *column = columns.data();
        for (int x = 0; x < image.width(); ++x) {
            Floats light = air;
            for (std::size_t k = 0; k < curtains; ++k, ++column) {
                const float distance = column->edge - v;
                if (distance >= 0) {
                    const auto at =
                        static_cast<std::size_t>(std::min(distance * column->reach * tableSize, tableSize - 1.0F));
                    light += (feet[k] * falloff.foot[at] + crowns[k] * falloff.crown[at]) * column->bright;
                } else if (distance > -0.35F) {
                    const auto at = static_cast<std::size_t>(-distance * tableSize);
                    light += feet[k] * (falloff.below[at] * column->bright);
                }
            }
            row[x].add(light * (1 - 0.78F * static_cast<float>(behindCard(image.across(x), v))));
        }
    }
}

void scenes::paintNightStars(QPainter &painter, const QSizeF &size, double t)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    constexpr int stars = 110;
    for (int i = 0; i < stars; ++i) {
        const double diameter = 0.8 + 1.4 * scatter(i, 71.3) * scatter(i, 97.9);
        const double twinkle = 0.5 + 0.5 * std::sin(6.28 * scatter(i, 131.7) + t * (0.4 + 1.1 * scatter(i, 151.9)));
        const double u = scatter(i, 41.7);
        const double v = 0.78 * scatter(i, 57.1);
        const double calm = 1 - 0.9 * behindCard(u, v); // none shines through a button
        painter.setBrush(QColor::fromRgbF(0.86F, 0.93F, 1, static_cast<float>((0.2 + 0.5 * twinkle) * calm)));
        painter.drawEllipse(QRectF(size.width() * u, size.height() * v, diameter, diameter));
    }
    painter.restore();
}

void scenes::paintNightForest(QPainter &painter, const QSizeF &size)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const auto colour = [](const Rgb &rgb) {
        return QColor(static_cast<int>(rgb.r), static_cast<int>(rgb.g), static_cast<int>(rgb.b));
    };
    const auto ink = [&](double top, const Rgb &crest, const Rgb &foot) {
        QLinearGradient fill(0, top * size.height(), 0, size.height());
        fill.setColorAt(0, colour(crest));
        fill.setColorAt(1, colour(foot));
        painter.setBrush(fill);
    };
    paintRange(painter, size, remote, far);
    paintRange(painter, size, far, middle);
    ink(middle.level - 0.03, {7, 32, 38}, middle.foot);
    paintWood(painter, size, middle, 240, 4, 0.45);
    paintRange(painter, size, middle, nearest);
    ink(0.87, nearest.crest, nearest.foot);
    paintWood(painter, size, nearest, 150, 6, 1);
    painter.restore();
}

QRectF scenes::nightForestPart(const QSizeF &size)
{
    const double top = std::floor(0.78 * size.height());
    return {0, top, size.width(), size.height() - top};
}

} // namespace kelp
