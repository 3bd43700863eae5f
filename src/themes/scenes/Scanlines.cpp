#include "themes/Scatter.h"
#include "themes/SoftImage.h"
#include "themes/scenes/FillRows.h"
#include "themes/scenes/Scenes.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace kelp {

namespace {

constexpr double linePitch = 3;    // points
constexpr double rollSeconds = 11; // for the band to pass once over the screen
constexpr double rowPitch = 18;    // points between two rows of a listing
constexpr double cell = 9;         // points, a character's width

/// One row of a listing: words as bars, more of them the longer the row is.
void paintRow(QPainter &painter, double left, double top, int index, double columns, double opacity)
{
    const int indent = static_cast<int>(3 * scatter(index, 17.3)) * 2;
    const int last = static_cast<int>(columns * (0.35 + 0.65 * scatter(index, 29.9)));
    if (scatter(index, 5.71) < 0.16)
        return; // an empty row
    int from = indent;
    for (int word = 0; from < last; ++word) {
        const int length = 2 + static_cast<int>(7 * scatter(index * 31 + word, 43.1));
        const int to = std::min(from + length, last);
        const double bright = 0.55 + 0.45 * scatter(index * 31 + word, 61.7);
        scenes::fillRows(painter, QRectF(left + from * cell, top, (to - from) * cell, 7),
                         QColor::fromRgbF(0.3F, 1, 0.45F, static_cast<float>(opacity * bright)));
        from = to + 1;
    }
}

void paintListing(QPainter &painter, const QSizeF &size, double left, double columns, double speed, int seed, double t)
{
    const double travelled = t * speed / rowPitch;
    // Rows come back after a few hours; until then each has its own number.
    const double first = std::fmod(std::floor(travelled), 4096);
    const int rows = static_cast<int>(size.height() / rowPitch) + 2;
    for (int i = 0; i < rows; ++i) {
        const double top = (i - fract(travelled)) * rowPitch;
        const double height = std::abs(top / size.height() - 0.5) * 2;
        paintRow(painter, left, top, seed + static_cast<int>(first) + i, columns, 0.15 * (1 - 0.6 * height * height));
    }
}

} // namespace

void scenes::paintPhosphor(SoftImage &image, double t)
{
    const Floats green = SoftPixel::light(0.03, 0.26, 0.1);
    const Floats black{0, 0, 0, 1};
    const double roll = fract(t / rollSeconds) * 1.5 - 0.25;
    const double flicker = 1 + 0.025 * std::sin(t * 7.3) + 0.02 * std::sin(t * 11.9);
    // What depends on one direction only is not computed for every pixel.
    std::vector<float> near(static_cast<std::size_t>(image.width()));
    std::vector<float> aside(near.size());
    for (std::size_t x = 0; x < near.size(); ++x) {
        const double u = image.across(static_cast<int>(x)) - 0.5;
        near[x] = static_cast<float>(1 - 2.6 * u * u);
        aside[x] = static_cast<float>(0.62 * (16 * u * u * u * u - 0.35));
    }
    const auto shine = static_cast<float>(0.5 * flicker);
    for (int y = 0; y < image.height(); ++y) {
        const double v = image.down(y) - 0.5;
        const double past = image.down(y) - roll;
        // A soft front below, a long tail above: the band rolls downwards.
        const double band = past > 0 ? std::exp(-past * past * 150) : std::exp(past * 9);
        const auto lit = static_cast<float>(0.22 * band);
        const auto away = static_cast<float>(2.6 * v * v);
        const auto beyond = static_cast<float>(0.62 * 16 * v * v * v * v);
        SoftPixel *row = image.row(y);
        for (std::size_t x = 0; x < near.size(); ++x) {
            row[x].add(green * (shine * std::max(0.0F, near[x] - away) + lit));
            row[x].cover(black, std::clamp(aside[x] + beyond, 0.0F, 0.85F));
        }
    }
}

void scenes::paintScanlines(QPainter &painter, const QSizeF &size, double t)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    const double columns = size.width() * 0.19 / cell;
    paintListing(painter, size, size.width() * 0.035, columns, 9, 0, t);
    paintListing(painter, size, size.width() * 0.79, columns, 14, 5000, t);
    const QColor dark = QColor::fromRgbF(0, 0, 0, 0.3F);
    for (double y = 0; y < size.height(); y += linePitch)
        painter.fillRect(QRectF(0, y, size.width(), 1), dark);
    painter.restore();
}

} // namespace kelp
