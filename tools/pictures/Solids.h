#pragma once

#include "Canvas.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

namespace kelp::pictures {

/// A place or a direction. x to the right, y up, z away from the eye; lengths in heights of the picture.
struct Vec
{
    double x = 0;
    double y = 0;
    double z = 0;

    friend Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vec operator*(Vec a, double f) { return {a.x * f, a.y * f, a.z * f}; }
};

[[nodiscard]] inline double dot(Vec a, Vec b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
[[nodiscard]] inline double length(Vec a)
{
    return std::sqrt(dot(a, a));
}
[[nodiscard]] inline Vec unit(Vec a)
{
    return a * (1 / std::max(1e-12, length(a)));
}
[[nodiscard]] inline Vec cross(Vec a, Vec b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
[[nodiscard]] inline Vec mirrored(Vec direction, Vec normal)
{
    return direction - normal * (2 * dot(direction, normal));
}
/// Turned about the upright axis.
[[nodiscard]] inline Vec turned(Vec a, double angle)
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {a.x * c - a.z * s, a.y, a.x * s + a.z * c};
}

/// How far `p` lies outside of a box about the origin with rounded edges; negative inside.
[[nodiscard]] inline double box(Vec p, Vec half, double round)
{
    const Vec q{std::abs(p.x) - half.x + round, std::abs(p.y) - half.y + round, std::abs(p.z) - half.z + round};
    const Vec out{std::max(q.x, 0.0), std::max(q.y, 0.0), std::max(q.z, 0.0)};
    return length(out) + std::min(std::max({q.x, q.y, q.z}), 0.0) - round;
}
/// The same of an upright cylinder, half as high as `half`.
[[nodiscard]] inline double cylinder(Vec p, double radius, double half, double round)
{
    const double x = std::hypot(p.x, p.z) - radius + round;
    const double y = std::abs(p.y) - half + round;
    return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) - round;
}
/// Of a line with round ends.
[[nodiscard]] inline double rod(Vec p, Vec from, Vec to, double radius)
{
    const Vec way = to - from;
    const Vec q = p - from;
    return length(q - way * clamped(dot(q, way) / dot(way, way))) - radius;
}
[[nodiscard]] inline double blended(double a, double b, double width)
{
    const double h = std::max(width - std::abs(a - b), 0.0) / width;
    return std::min(a, b) - h * h * width / 4;
}

/// Follows a ray until it meets a solid; how far that is, or a negative number if it meets none before `far`.
/// `distance(place)` never tells more than the true distance.
template<typename Distance>
[[nodiscard]] double march(const Distance &distance, Vec from, Vec direction, double near, double far)
{
    double way = near;
    for (int i = 0; i < 160 && way < far; ++i) {
        const double gap = distance(from + direction * way);
        if (gap < 0.00025)
            return way;
        way += gap;
    }
    return -1;
}

/// How much of a light is seen from `place`, 0…1; `size` is about the light's width over its distance.
template<typename Distance>
[[nodiscard]] double seen(const Distance &distance, Vec place, Vec light, double far, double size)
{
    double result = 1;
    double way = 0.004;
    for (int i = 0; i < 48 && way < far; ++i) {
        const double gap = distance(place + light * way);
        result = std::min(result, 0.5 + 0.5 * gap / (size * way));
        if (result < 0)
            return 0;
        way += std::clamp(gap, 0.003, 0.05);
    }
    return result * result * (3 - 2 * result);
}

/// How open a place is to the light from all around, 0…1.
template<typename Distance>
[[nodiscard]] double openness(const Distance &distance, Vec place, Vec normal, double reach)
{
    double closed = 0;
    double weight = 1;
    for (int i = 1; i <= 5; ++i, weight *= 0.72) {
        const double out = reach * i / 5;
        closed += weight * std::max(0.0, out - distance(place + normal * out)) / reach;
    }
    return clamped(1 - 0.85 * closed);
}

template<typename Distance>
[[nodiscard]] Vec normalAt(const Distance &distance, Vec place, double step = 0.0004)
{
    const Vec corners[] = {{1, -1, -1}, {-1, -1, 1}, {-1, 1, -1}, {1, 1, 1}};
    Vec sum;
    for (const Vec &corner : corners)
        sum = sum + corner * distance(place + corner * step);
    return unit(sum);
}

/// What a ray meets: a colour, and how much of what lies behind is hidden.
struct Seen
{
    Colour colour;
    double alpha = 0;
};

/// Lays what look(u, v) sees over the canvas, `fine` × `fine` looks for a pixel, on all processors.
template<typename Look>
void cover(Canvas &canvas, double top, double bottom, int fine, const Look &look)
{
    std::atomic<int> next = std::max(0, static_cast<int>(top * canvas.height()));
    const int end = std::min(canvas.height(), static_cast<int>(std::ceil(bottom * canvas.height())));
    const auto work = [&] {
        for (int y = next++; y < end; y = next++) {
            for (int x = 0; x < canvas.width(); ++x) {
                Colour sum;
                double alpha = 0;
                for (int i = 0; i < fine * fine; ++i) {
                    const Seen seen = look((x + (i % fine + 0.5) / fine) / canvas.height(),
                                           (y + (i / fine + 0.5) / fine) / canvas.height());
                    sum = sum + seen.colour * seen.alpha;
                    alpha += seen.alpha;
                }
                const double part = 1.0 / (fine * fine);
                canvas.at(x, y) = canvas.at(x, y) * (1 - alpha * part) + sum * part;
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
        threads.emplace_back(work);
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace kelp::pictures
