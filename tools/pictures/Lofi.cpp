#include "Canvas.h"
#include "LofiDesk.h"

#include <vector>

namespace kelp::pictures {

namespace {

Colour lamp(double kind)
{
    if (kind < 0.55)
        return {1.0F, 0.66F, 0.32F};
    if (kind < 0.7)
        return {1.0F, 0.84F, 0.6F};
    if (kind < 0.82)
        return {1.0F, 0.3F, 0.26F};
    if (kind < 0.92)
        return {0.35F, 0.68F, 1.0F};
    return {0.95F, 0.4F, 0.75F};
}

/// Houses with lit windows, row behind row; farther ones are lighter, as the rain lies between.
void paintHouses(Canvas &canvas)
{
    for (int row = 0; row < 3; ++row) {
        double left = -0.05;
        for (int i = 0; left < canvas.aspect(); ++i) {
            const double wide = 0.075 + 0.1 * lattice(i, row, 7);
            const double top = 0.26 + 0.085 * row + 0.25 * lattice(i, row, 8);
            const Colour wall = mix({0.16F, 0.13F, 0.24F}, {0.045F, 0.045F, 0.1F}, row / 2.0);
            canvas.each(left, top, left + wide, 1, [&](Colour &pixel, double, double v) {
                pixel = mix(wall, pixel * 0.5 + wall * 0.5, smooth(top, 1.3, v));
            });
            const double pitch = 0.0155;
            const int columns = static_cast<int>((wide - 0.012) / pitch);
            for (int y = 0; top + 0.016 + y * pitch * 1.3 < 0.9; ++y) {
                for (int x = 0; x < columns; ++x) {
                    if (lattice(x + i * 37, y + row * 91, 9) > 0.27)
                        continue;
                    const double u = left + 0.009 + x * pitch;
                    const double v = top + 0.013 + y * pitch * 1.3;
                    const Colour light =
                        lamp(lattice(x + i * 37, y + row * 91, 10)) * (0.3 + 0.75 * lattice(x + i * 37, y, 11));
                    canvas.each(u, v, u + pitch * 0.55, v + pitch * 0.75,
                                [&](Colour &pixel, double, double) { pixel = pixel + light; });
                }
            }
            left += wide + 0.012 * lattice(i, row, 12);
        }
    }
}

/// A lamp as a lens out of focus shows it: a disc, brighter at its rim.
void addDisc(Canvas &canvas, double u, double v, double radius, Colour light)
{
    canvas.each(u - radius, v - radius, u + radius, v + radius, [&](Colour &pixel, double x, double y) {
        const double distance = std::hypot(x - u, y - v) / radius;
        const double rim = 0.7 + 0.3 * std::pow(distance, 4);
        pixel = pixel + light * (smooth(1, 0.93, distance) * rim);
    });
}

/// Lamps, signs and cars far below: near ones are large discs, farther ones shrink and gather towards the houses.
void paintStreet(Canvas &canvas)
{
    constexpr int lamps = 330;
    for (int i = 0; i < lamps; ++i) {
        const double depth = std::pow((i + lattice(i, 7, 21)) / lamps, 1.7); // the nearest last
        const double u = lattice(i, 1, 21) * canvas.aspect();
        const double v = 0.52 + 0.3 * depth + (0.05 + 0.05 * depth) * (lattice(i, 2, 21) - 0.5);
        const double middle = bell(u - canvas.aspect() / 2, 0.6) * bell(v - 0.65, 0.2);
        const double bright = (0.15 + 0.62 * std::pow(lattice(i, 4, 21), 2.2)) * (1 - 0.9 * middle);
        const double radius = 0.0045 + 0.031 * depth * (0.55 + 0.45 * lattice(i, 5, 21));
        addDisc(canvas, u, v, radius, lamp(lattice(i, 6, 21)) * (bright * (1.15 - 0.55 * depth)));
    }
    for (int i = 0; i < 14; ++i) {
        const double u = lattice(i, 1, 22) * canvas.aspect();
        const double v = 0.14 + 0.38 * lattice(i, 2, 22);
        const double middle = bell(u - canvas.aspect() / 2, 0.5) * bell(v - 0.47, 0.2);
        addDisc(canvas, u, v, 0.01 + 0.012 * lattice(i, 3, 22), lamp(lattice(i, 4, 22)) * (0.15 * (1 - 0.9 * middle)));
    }
}

constexpr double paneFoot = 0.797; // where the frame of the window hides the glass

/// Drops on the pane: each shows the town upside down, as a small lens does.
void paintDrop(Canvas &canvas, const Canvas &town, double u, double v, double radius, double tall)
{
    canvas.each(u - radius * 1.2, v - radius * tall * 1.2, u + radius * 1.2, v + radius * tall * 1.2,
                [&](Colour &pixel, double x, double y) {
                    const double dx = (x - u) / radius;
                    double dy = (y - v) / (radius * tall);
                    const double narrow = dy < 0 ? 1 + 0.35 * dy * dy : 1; // a drop hangs: slimmer above
                    const double distance = std::hypot(dx * narrow, dy);
                    const double inside = smooth(1.04, 0.9, distance);
                    if (inside <= 0)
                        return;
                    const double bend = 0.35 + 0.65 * distance * distance;
                    const Colour seen = town.sample(u - dx * bend * 0.16, v - dy * bend * 0.2 + 0.05);
                    const double shade = 0.5 + 0.62 * smooth(-0.75, 0.9, dy);
                    const double edge = smooth(0.62, 1.0, distance);
                    Colour drop = (seen + Colour{0.03F, 0.035F, 0.05F}) * (1.5 * shade) *
                                  (1 - 0.3 * edge * smooth(0.5, -0.9, dy));
                    drop = drop + Colour{0.5F, 0.58F, 0.7F} * (0.4 * bell(dx + 0.32, 0.2) * bell(dy + 0.42, 0.17));
                    drop = drop + Colour{0.85F, 0.66F, 0.46F} * (0.3 * edge * smooth(0.15, 1.0, dy));
                    pixel = mix(pixel, drop, inside);
                });
}

void paintGlass(Canvas &canvas)
{
    const Canvas town = canvas;
    // A breath of condensation, wiped clear where water ran down.
    struct Run
    {
        double u;
        double top;
        double end;
        double width;
    };
    std::vector<Run> runs;
    for (int i = 0; i < 15; ++i) {
        const double u = lattice(i, 1, 31) * canvas.aspect();
        // Behind the card they run on until they are below its text.
        const bool behindCard = std::abs(u - canvas.aspect() / 2) < 0.4;
        const double end = behindCard ? 0.68 + 0.09 * lattice(i, 3, 31) : 0.35 + 0.42 * lattice(i, 3, 31);
        runs.push_back({u, 0.25 * lattice(i, 2, 31) - 0.05, end, 0.0032 + 0.003 * lattice(i, 4, 31)});
    }
    const auto path = [](const Run &run, double v) { return run.u + 0.012 * (noise(run.u * 90, v * 7, 33) - 0.5); };
    canvas.each([&](Colour &pixel, double u, double v) {
        const double breath = 0.032 + 0.03 * clouds(u * 2.5, v * 2.5, 4, 32);
        pixel = pixel + Colour{0.62F, 0.66F, 0.9F} * breath *
                            (0.7 + 0.3 * lattice(static_cast<int>(u * 1600), static_cast<int>(v * 1600), 34));
    });
    for (const Run &run : runs) {
        canvas.each(run.u - 0.03, run.top, run.u + 0.03, run.end, [&](Colour &pixel, double u, double v) {
            const double away = (u - path(run, v)) / run.width;
            const double inside = smooth(1.05, 0.75, std::abs(away)) * smooth(run.top, run.top + 0.12, v);
            const Colour seen = town.sample(u - away * 0.02, v + 0.012) * (0.92 + 0.22 * away);
            pixel = mix(pixel, seen + Colour{0.02F, 0.025F, 0.035F}, inside * 0.85);
        });
    }
    // Fewer of them where the text is read.
    const auto drop = [&](int i, int seed, double radius, double tall) {
        const double u = lattice(i, 1, seed) * canvas.aspect();
        const double v = lattice(i, 2, seed);
        if (v + radius * tall * 1.2 > paneFoot)
            return;
        if (lattice(i, 4, seed) > 1.15 * bell(u - canvas.aspect() / 2, 0.42) * bell(v - 0.48, 0.17))
            paintDrop(canvas, town, u, v, radius, tall);
    };
    for (int i = 0; i < 2500; ++i) {
        const double size = std::pow(lattice(i, 3, 41), 5);
        drop(i, 41, 0.0014 + 0.0058 * size, 1 + 0.25 * size);
    }
    for (int i = 0; i < 40; ++i)
        drop(i, 43, 0.0075 + 0.006 * lattice(i, 3, 43), 1.22);
    for (const Run &run : runs)
        paintDrop(canvas, town, path(run, run.end), run.end, run.width * 2.1, 1.45);
}

} // namespace

void paintLofi(Canvas &canvas)
{
    canvas.each([](Colour &pixel, double u, double v) {
        const Colour top{0.05F, 0.06F, 0.16F};
        const Colour low{0.4F, 0.2F, 0.27F};
        pixel = mix(top, low, smooth(0, 0.75, v)) * (0.85 + 0.35 * clouds(u * 1.6, v * 2.6, 5, 3));
    });
    paintHouses(canvas);
    canvas.blur(0.009);
    // The glow of the streets in the wet air.
    canvas.each([](Colour &pixel, double u, double v) {
        const double air = bell(v - 0.6, 0.17) * (0.55 + 0.9 * clouds(u * 1.9, v * 3, 4, 13));
        pixel = pixel + Colour{0.13F, 0.068F, 0.058F} * air;
    });
    paintStreet(canvas);
    canvas.blur(0.0022);
    canvas.dimBehindCard(0.58);
    paintGlass(canvas);
    paintDesk(canvas);
}

} // namespace kelp::pictures
