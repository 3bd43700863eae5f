#include "Canvas.h"

#include "themes/scenes/BehindCard.h"

#include <cstdint>

namespace kelp::pictures {

double lattice(int x, int y, int seed)
{
    auto bits = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U ^
                static_cast<std::uint32_t>(seed) * 0xC2B2AE3DU;
    bits ^= bits >> 15;
    bits *= 0x2C1B3C6DU;
    bits ^= bits >> 12;
    bits *= 0x297A2D39U;
    bits ^= bits >> 15;
    return bits / 4294967296.0;
}

double noise(double x, double y, int seed)
{
    const double left = std::floor(x);
    const double top = std::floor(y);
    const auto fade = [](double t) { return t * t * t * (t * (t * 6 - 15) + 10); };
    const double u = fade(x - left);
    const double v = fade(y - top);
    const auto corner = [&](int dx, int dy) {
        return lattice(static_cast<int>(left) + dx, static_cast<int>(top) + dy, seed);
    };
    return std::lerp(std::lerp(corner(0, 0), corner(1, 0), u), std::lerp(corner(0, 1), corner(1, 1), u), v);
}

double clouds(double x, double y, int octaves, int seed)
{
    double sum = 0;
    double weight = 0.5;
    for (int i = 0; i < octaves; ++i, weight /= 2) {
        sum += weight * noise(x, y, seed + i);
        const double turned = 1.6 * x + 1.2 * y; // turned, so that the lattices do not line up
        y = 1.6 * y - 1.2 * x + 3.7;
        x = turned + 1.3;
    }
    return sum;
}

double crests(double x, double y, int octaves, int seed)
{
    double sum = 0;
    double weight = 0.5;
    for (int i = 0; i < octaves; ++i, weight /= 2) {
        sum += weight * (1 - std::abs(2 * noise(x, y, seed + i) - 1));
        const double turned = 1.6 * x + 1.2 * y;
        y = 1.6 * y - 1.2 * x + 3.7;
        x = turned + 1.3;
    }
    return sum;
}

Colour Canvas::sample(double u, double v) const
{
    const double x = std::clamp(u * m_height - 0.5, 0.0, m_width - 1.001);
    const double y = std::clamp(v * m_height - 0.5, 0.0, m_height - 1.001);
    const auto at = [&](int dx, int dy) {
        return m_pixels[static_cast<std::size_t>(static_cast<int>(y) + dy) * static_cast<std::size_t>(m_width) +
                        static_cast<std::size_t>(static_cast<int>(x) + dx)];
    };
    const double part = x - std::floor(x);
    return mix(mix(at(0, 0), at(1, 0), part), mix(at(0, 1), at(1, 1), part), y - std::floor(y));
}

void Canvas::addLight(double u, double v, double radius, Colour light)
{
    const double reach = radius * 3;
    each(u - reach, v - reach, u + reach, v + reach, [&](Colour &pixel, double x, double y) {
        const double distance2 = ((x - u) * (x - u) + (y - v) * (y - v)) / (radius * radius);
        pixel = pixel + light * std::exp(-distance2);
    });
}

/// Three box passes each way come close to a bell curve.
void Canvas::blur(double radius)
{
    const int reach = std::max(1, static_cast<int>(std::lround(radius * m_height / 2)));
    std::vector<Colour> copy;
    const auto pass = [&](Colour *pixels, int count, std::ptrdiff_t step) {
        copy.resize(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
            copy[static_cast<std::size_t>(i)] = pixels[i * step];
        const auto get = [&](int i) { return copy[static_cast<std::size_t>(std::clamp(i, 0, count - 1))]; };
        Colour sum;
        for (int i = -reach; i <= reach; ++i)
            sum = sum + get(i);
        for (int i = 0; i < count; ++i) {
            pixels[i * step] = sum * (1.0 / (2 * reach + 1));
            sum = sum + get(i + reach + 1) + get(i - reach) * -1;
        }
    };
    for (int i = 0; i < 3; ++i) {
        for (int y = 0; y < m_height; ++y)
            pass(&at(0, y), m_width, 1);
        for (int x = 0; x < m_width; ++x)
            pass(&at(x, 0), m_height, m_width);
    }
}

void Canvas::dimBehindCard(double part)
{
    each([&](Colour &pixel, double u, double v) { pixel = pixel * (1 - part * scenes::behindCard(u / aspect(), v)); });
}

QImage Canvas::finished() const
{
    QImage image(m_width, m_height, QImage::Format_RGB32);
    for (int y = 0; y < m_height; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < m_width; ++x) {
            const Colour &colour =
                m_pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x)];
            const double grain = lattice(x, y, 4711) + lattice(x, y, 4712) - 0.5;
            const auto byte = [&](double value) {
                return static_cast<int>(std::clamp(value * 255 + grain, 0.0, 255.0));
            };
            line[x] = qRgb(byte(colour.r), byte(colour.g), byte(colour.b));
        }
    }
    return image;
}

} // namespace kelp::pictures
