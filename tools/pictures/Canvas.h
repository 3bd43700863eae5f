#pragma once

#include <QImage>

#include <algorithm>
#include <cmath>
#include <vector>

namespace kelp::pictures {

struct Colour
{
    float r = 0;
    float g = 0;
    float b = 0;

    friend Colour operator+(Colour a, Colour c) { return {a.r + c.r, a.g + c.g, a.b + c.b}; }
    friend Colour operator*(Colour a, Colour c) { return {a.r * c.r, a.g * c.g, a.b * c.b}; }
    friend Colour operator*(Colour a, double f)
    {
        const auto k = static_cast<float>(f);
        return {a.r * k, a.g * k, a.b * k};
    }
};

[[nodiscard]] inline Colour mix(Colour a, Colour b, double part)
{
    return a * (1 - part) + b * part;
}
[[nodiscard]] inline double clamped(double value)
{
    return std::clamp(value, 0.0, 1.0);
}
[[nodiscard]] inline double smooth(double from, double to, double value)
{
    const double way = clamped((value - from) / (to - from));
    return way * way * (3 - 2 * way);
}
[[nodiscard]] inline double bell(double x, double width)
{
    return std::exp(-x * x / (width * width));
}

/// A fixed random number in 0…1 for a place on a lattice.
[[nodiscard]] double lattice(int x, int y, int seed);
/// Smooth noise around 0.5, about 0…1.
[[nodiscard]] double noise(double x, double y, int seed);
/// Sums of it, each octave twice as fine and half as strong; about 0…1.
[[nodiscard]] double clouds(double x, double y, int octaves, int seed);
/// As clouds, with sharp crests.
[[nodiscard]] double crests(double x, double y, int octaves, int seed);

/// A picture in the making. Places: u = 0…aspect() from left to right, v = 0…1 from top to bottom.
class Canvas
{
public:
    Canvas(int width, int height)
        : m_width(width), m_height(height), m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    {
    }

    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] double aspect() const { return static_cast<double>(m_width) / m_height; }
    [[nodiscard]] Colour &at(int x, int y)
    {
        return m_pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x)];
    }
    /// Blended from four pixels; places outside are those at the edge.
    [[nodiscard]] Colour sample(double u, double v) const;

    /// Calls paint(colour, u, v) for every pixel within the frame.
    template<typename Paint>
    void each(double left, double top, double right, double bottom, Paint paint)
    {
        const auto pixel = [&](double place, int count) {
            return std::clamp(static_cast<int>(std::floor(place * m_height)), 0, count);
        };
        for (int y = pixel(top, m_height); y < pixel(bottom + 1.0 / m_height, m_height); ++y) {
            for (int x = pixel(left, m_width); x < pixel(right + 1.0 / m_height, m_width); ++x)
                paint(at(x, y), (x + 0.5) / m_height, (y + 0.5) / m_height);
        }
    }
    template<typename Paint>
    void each(Paint paint)
    {
        each(0, 0, aspect(), 1, paint);
    }

    /// A point of light with a soft edge.
    void addLight(double u, double v, double radius, Colour light);
    void blur(double radius);
    /// Takes `part` (0…1) of the light away where the card will lie.
    void dimBehindCard(double part);

    /// In 8 bits per channel, with a little noise instead of bands.
    [[nodiscard]] QImage finished() const;

private:
    int m_width;
    int m_height;
    std::vector<Colour> m_pixels;
};

void paintZen(Canvas &canvas);
void paintSpace(Canvas &canvas);
void paintLofi(Canvas &canvas);

} // namespace kelp::pictures
