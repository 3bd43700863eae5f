#include "themes/Scatter.h"
#include "themes/SoftImage.h"
#include "themes/scenes/BehindCard.h"
#include "themes/scenes/Scenes.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace kelp {

namespace {

constexpr int side = 256; // of the tile, a power of two

/// Smooth noise in 0…1 that repeats after `period` in both directions.
double latticeNoise(double x, double y, int period, int seed)
{
    const auto corner = [&](int column, int row) {
        return scatter((column % period) + (row % period) * 57 + seed * 977, 17.31);
    };
    const int column = static_cast<int>(x);
    const int row = static_cast<int>(y);
    const double u = fract(x) * fract(x) * (3 - 2 * fract(x));
    const double v = fract(y) * fract(y) * (3 - 2 * fract(y));
    return std::lerp(std::lerp(corner(column, row), corner(column + 1, row), u),
                     std::lerp(corner(column, row + 1), corner(column + 1, row + 1), u), v);
}

/// Clouds in 0…1 that join at the tile's edges.
std::vector<float> makeClouds()
{
    std::vector<float> tile(static_cast<std::size_t>(side) * side);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            double sum = 0;
            double weight = 0.55;
            for (int octave = 0, period = 4; octave < 4; ++octave, period *= 2, weight *= 0.5) {
                const double scale = static_cast<double>(period) / side;
                sum += weight * latticeNoise(x * scale, y * scale, period, octave);
            }
            tile[static_cast<std::size_t>(y * side + x)] = static_cast<float>(sum);
        }
    }
    return tile;
}

/// A bank: how often the tile fits into the view's width, and how fast it moves, in tiles per second.
struct Bank
{
    double across;
    double down;
    double speed;
    double offset;
};

/// Reads along one row of the tile.
class Reader
{
public:
    Reader(const std::vector<float> &tile, const Bank &bank, double v, double t)
        : m_row(tile.data() + static_cast<std::ptrdiff_t>(fract(v * bank.down + bank.offset) * side) * side),
          m_below(tile.data() +
                  static_cast<std::ptrdiff_t>(fract(v * bank.down + bank.offset + 1.0 / side) * side) * side),
          m_part(static_cast<float>(fract(fract(v * bank.down + bank.offset) * side))),
          m_start(fract(t * bank.speed + bank.offset)),
          m_across(bank.across)
    {
    }

    [[nodiscard]] float at(double u) const
    {
        const double position = (u * m_across + m_start) * side;
        const auto whole = static_cast<int>(position);
        const auto part = static_cast<float>(position - whole);
        const auto here = static_cast<std::size_t>(whole & (side - 1));
        const auto next = static_cast<std::size_t>((whole + 1) & (side - 1));
        const float above = m_row[here] + (m_row[next] - m_row[here]) * part;
        const float below = m_below[here] + (m_below[next] - m_below[here]) * part;
        return above + (below - above) * m_part;
    }

private:
    const float *m_row;
    const float *m_below;
    float m_part;
    double m_start;
    double m_across;
};

/// Where fog lies: over the water, thinner towards the sky and where the viewer stands.
double thickness(double v)
{
    const double above = std::clamp((v - 0.42) / 0.24, 0.0, 1.0);
    const double below = std::clamp((1.06 - v) / 0.36, 0.0, 1.0);
    return above * above * (3 - 2 * above) * below;
}

} // namespace

void scenes::paintFog(SoftImage &image, double t)
{
    static const std::vector<float> clouds = makeClouds();
    static constexpr Bank far{0.9, 1.7, 0.0042, 0.13};
    static constexpr Bank near{0.55, 1.1, -0.0065, 0.57};
    for (int y = 0; y < image.height(); ++y) {
        const double v = image.down(y);
        const auto thick = static_cast<float>(thickness(v));
        if (thick <= 0)
            continue;
        // Warmer where the dawn is, colder in front.
        const Floats colour = SoftPixel::opaque(0.47 - 0.08 * v, 0.48 - 0.06 * v, 0.53 - 0.02 * v);
        const Reader farther(clouds, far, v + 0.012 * std::sin(t * 0.05), t);
        const Reader nearer(clouds, near, v + 0.02 * std::sin(t * 0.037 + 1), t);
        SoftPixel *row = image.row(y);
        for (int x = 0; x < image.width(); ++x) {
            const double u = image.across(x);
            const float mass = farther.at(u) * 0.6F + nearer.at(u) * 0.6F;
            const float dense = std::clamp((mass - 0.36F) * 2.1F, 0.0F, 1.0F);
            const float calm = 1 - 0.6F * static_cast<float>(behindCard(u, v));
            row[x].cover(colour, 0.4F * calm * thick * dense * dense * (3 - 2 * dense));
        }
    }
}

} // namespace kelp
