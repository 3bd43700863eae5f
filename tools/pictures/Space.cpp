#include "Canvas.h"

namespace kelp::pictures {

namespace {

/// How much gas lies in a direction: a band from the upper right to the left, torn by streams.
struct Gas
{
    double mass;
    double hot;  ///< 0…1, towards the bright core
    double band; ///< 0…1, towards the middle of the band
};

constexpr double coreU = 0.29;
constexpr double coreV = 0.21;

Gas gasAt(double u, double v)
{
    const double warpU = clouds(u * 1.7 + 3, v * 1.7, 4, 5) - 0.47;
    const double warpV = clouds(u * 1.7, v * 1.7 + 8, 4, 9) - 0.47;
    const double x = u + 0.75 * warpU;
    const double y = v + 0.75 * warpV;
    const double along = 0.16 + 0.36 * u; // the band's middle
    const double band = bell(v + 0.3 * warpV - along, 0.4);
    const double billows = clouds(x * 3.1, y * 3.1, 7, 15);
    const double threads = crests(x * 2.6 + 1, y * 2.6, 6, 27);
    const double core = std::exp(-(std::pow(u - coreU, 2) / 0.08 + std::pow(v - coreV, 2) / 0.045));
    const double second = std::exp(-(std::pow(u - 1.36, 2) / 0.05 + std::pow(v - 0.3, 2) / 0.03));
    const double mass = band * smooth(0.3, 0.78, billows) + 0.75 * band * std::pow(threads, 4.5);
    return {mass, clamped(core + 0.55 * second), band};
}

double dustAt(double u, double v)
{
    const double warp = clouds(u * 2.2 + 1, v * 2.2 + 6, 4, 47) - 0.47;
    return smooth(0.46, 0.78, crests(u * 2.1 + 7 + warp, v * 2.4 + 2 - 0.6 * warp, 6, 41));
}

/// From far to near: a faint glow, gas that shines, and dust before it whose edges towards the core catch its light.
Colour sky(double u, double v)
{
    const Gas gas = gasAt(u, v);
    const Colour deep{0.011F, 0.012F, 0.032F};
    const Colour blue{0.07F, 0.17F, 0.48F};
    const Colour violet{0.3F, 0.12F, 0.47F};
    const Colour rose{0.84F, 0.37F, 0.47F};
    const Colour teal{0.05F, 0.42F, 0.5F};
    const double hue = clouds(u * 1.4 + 4, v * 1.4 + 2, 4, 61);
    Colour cloud = mix(blue, violet, smooth(0.32, 0.62, hue));
    const double shell = bell(gas.hot - 0.22, 0.17); // ionised gas around the hot heart
    cloud = mix(cloud, teal, clamped(0.7 * smooth(0.48, 0.66, clouds(u * 1.9 + 9, v * 1.9, 4, 71)) + 0.55 * shell));
    cloud = mix(cloud, {0.5F, 0.16F, 0.42F}, 0.7 * smooth(0.08, 0.45, gas.hot));
    cloud = mix(cloud, rose, smooth(0.3, 0.95, gas.hot) * 0.9);
    const double veil = clouds(u * 0.9 + 11, v * 0.9 + 5, 4, 75);
    Colour colour = deep + mix(blue, violet, smooth(0.35, 0.6, veil)) * (0.16 * smooth(0.3, 0.75, veil) * gas.band);
    colour = colour + cloud * (gas.mass * (1.1 + 1.7 * gas.hot));
    colour = colour + Colour{1.0F, 0.78F, 0.68F} * (0.3 * gas.hot * gas.hot * gas.mass);
    const double toU = coreU - u;
    const double toV = coreV - v;
    const double way = std::max(0.05, std::hypot(toU, toV));
    const double dust = dustAt(u, v) * gas.band;
    const double lit = dustAt(u, v) - dustAt(u + 0.016 * toU / way, v + 0.016 * toV / way);
    colour = colour * (1 - 0.8 * dust * (1 - 0.3 * gas.hot));
    const double near = std::exp(-way * 2.6);
    return colour +
           mix(violet, {1.0F, 0.6F, 0.5F}, near) * (2.6 * std::max(0.0, lit) * near * gas.band * (0.35 + gas.mass));
}

void paintStars(Canvas &canvas)
{
    const double pixel = 1.0 / 1600;
    // Far away ones, countless where the band lies.
    for (int i = 0; i < 9000; ++i) {
        const double u = lattice(i, 1, 6) * canvas.aspect();
        const double v = lattice(i, 2, 6);
        const double band = bell(v - 0.16 - 0.36 * (canvas.aspect() - u), 0.34);
        if (lattice(i, 3, 6) < 0.15 + 0.85 * band)
            canvas.addLight(u, v, pixel * 0.8, Colour{0.8F, 0.84F, 1.0F} * (0.05 + 0.13 * lattice(i, 4, 6)));
    }
    for (int i = 0; i < 2600; ++i) {
        const double u = lattice(i, 1, 5) * canvas.aspect();
        const double v = lattice(i, 2, 5);
        const double size = std::pow(lattice(i, 3, 5), 7);
        const double heat = lattice(i, 4, 5);
        const Colour tint =
            mix(mix({1.0F, 0.78F, 0.62F}, {1, 1, 1}, clamped(heat * 2)), {0.68F, 0.8F, 1.0F}, clamped(heat * 2 - 1));
        const double bright = 0.07 + 0.4 * std::pow(lattice(i, 6, 5), 3) + 0.6 * size;
        canvas.addLight(u, v, pixel * (0.95 + 1.1 * size), tint * bright);
        if (size > 0.55)
            canvas.addLight(u, v, pixel * (7 + 9 * size), tint * (0.1 * size));
    }
    // A few near ones, with the cross of a telescope's mirror.
    const double bright[][3] = {{1.4, 0.14, 1},      {1.085, 0.075, 0.6}, {0.41, 0.13, 0.7},
                                {1.505, 0.62, 0.55}, {0.13, 0.37, 0.5},   {1.28, 0.86, 0.5}};
    for (const auto &star : bright) {
        const Colour tint{0.86F, 0.9F, 1.0F};
        canvas.addLight(star[0], star[1], 0.0022 * star[2], tint * 1.1);
        canvas.addLight(star[0], star[1], 0.013 * star[2], tint * 0.13);
        canvas.each(star[0] - 0.06, star[1] - 0.06, star[0] + 0.06, star[1] + 0.06,
                    [&](Colour &place, double u, double v) {
                        const double across = std::abs(u - star[0]);
                        const double down = std::abs(v - star[1]);
                        const double ray = std::exp(-across / (0.0125 * star[2])) * bell(down, 0.0009) +
                                           std::exp(-down / (0.0125 * star[2])) * bell(across, 0.0009);
                        place = place + tint * (0.5 * ray);
                    });
    }
}

/// Towns of a planet's night side: places where people gathered, and threads between them.
double townsAt(double x, double y)
{
    const double land = smooth(0.42, 0.56, clouds(x * 2.3 + 4, y * 2.3 + 1, 5, 121));
    const double crowd = clouds(x * 6 + 2, y * 6, 4, 122);
    double light = 0;
    constexpr double cells = 105; // per radius
    const int column = static_cast<int>(std::floor(x * cells));
    const int row = static_cast<int>(std::floor(y * cells));
    for (int j = row - 1; j <= row + 1; ++j) {
        for (int i = column - 1; i <= column + 1; ++i) {
            if (lattice(i, j, 123) > 1.35 * smooth(0.42, 0.72, crowd))
                continue;
            const double away = std::hypot(x * cells - i - lattice(i, j, 124), y * cells - j - lattice(i, j, 125));
            const double size = std::pow(lattice(i, j, 126), 4);
            light += (0.25 + 1.6 * size) * (bell(away, 0.14 + 0.16 * size) + 0.13 * bell(away, 0.6));
        }
    }
    const double roads = std::pow(crests(x * 17, y * 17, 4, 127), 9) * smooth(0.4, 0.62, crowd);
    return land * (light + 0.35 * roads + 0.05 * smooth(0.45, 0.7, crowd));
}

struct Globe
{
    double u;
    double v;
    double radius;
};

/// A planet before its sun: night, with the lights of towns, and a bright edge where the day begins. It lies where few
/// of the twinkling stars are that are drawn over the picture, and its towns take in those few.
void paintPlanet(Canvas &canvas)
{
    const Globe globe{-0.35, 1.25, 0.75};
    const double sunU = 0.72; // where the sun is about to rise
    const double sunV = -0.694;
    canvas.each(0, 0.2, 1, 1, [&](Colour &pixel, double u, double v) {
        const double x = (u - globe.u) / globe.radius;
        const double y = (v - globe.v) / globe.radius;
        const double distance = std::sqrt(x * x + y * y);
        const double facing = (x * sunU + y * sunV) / std::max(1e-6, distance);
        const double day = std::pow(smooth(0.2, 1.0, facing), 1.6);
        // Air above the edge: a bright line and a wide glow, reddish near the ground where the sun rises.
        const double outside = std::max(0.0, distance - 1);
        const Colour air = Colour{0.38F, 0.62F, 1.0F} * ((0.1 + 0.85 * day) * std::exp(-outside * 150)) +
                           Colour{0.16F, 0.3F, 0.8F} * ((0.04 + 0.42 * day) * std::exp(-outside * 32)) +
                           Colour{0.12F, 0.16F, 0.42F} * (0.22 * day * std::exp(-outside * 9));
        const double inside = smooth(1 + 0.0007 / globe.radius, 1 - 0.0007 / globe.radius, distance);
        Colour ground;
        if (distance < 1.01) {
            const double z = std::sqrt(std::max(0.0, 1 - distance * distance));
            const double longitude = std::atan2(x, std::max(0.02, z));
            const double latitude = std::asin(std::clamp(y, -1.0, 1.0));
            const double light = clamped((0.37 * (x * sunU + y * sunV) - 0.93 * z + 0.05) * 2.4);
            const double stir = clouds(longitude * 4, latitude * 4 + 3, 4, 83) - 0.47;
            const double weather =
                smooth(0.46, 0.72, clouds(longitude * 5 + stir * 2.2, latitude * 11 + stir * 3, 6, 85));
            const Colour sea = mix({0.05F, 0.16F, 0.42F}, {0.62F, 0.7F, 0.86F}, weather);
            const double dusk = smooth(0.0, 0.3, light) * smooth(0.75, 0.3, light);
            ground = sea * (1.5 * std::pow(light, 1.25)) + Colour{0.5F, 0.22F, 0.12F} * (0.22 * dusk * (0.4 + weather));
            // The air seen on edge.
            const double rim = std::pow(1 - z, 5);
            ground = ground + Colour{0.32F, 0.56F, 1.0F} * (rim * (0.1 + 0.8 * day)) +
                     Colour{0.09F, 0.16F, 0.4F} * (0.4 * std::pow(1 - z, 2) * (0.12 + day));
            // The night under the stars, and its towns.
            const double night = smooth(0.14, 0.0, light);
            ground = ground + Colour{0.011F, 0.014F, 0.028F} + Colour{0.05F, 0.06F, 0.1F} * (0.35 * weather * night);
            const double veil = 1 - 0.75 * weather;
            ground = ground + mix({1.0F, 0.62F, 0.27F}, {1.0F, 0.84F, 0.6F}, stir + 0.5) *
                                  (0.85 * townsAt(longitude, latitude) * night * veil * smooth(0.06, 0.3, z));
        }
        pixel = mix(pixel * (1 - 0.5 * inside) + air, ground, inside);
    });
    // The first of the sun.
    const double u = globe.u + globe.radius * sunU;
    const double v = globe.v + globe.radius * sunV;
    canvas.addLight(u, v, 0.006, {1.0F, 0.95F, 0.88F});
    canvas.addLight(u, v, 0.02, {0.5F, 0.46F, 0.5F});
    canvas.addLight(u, v, 0.07, {0.13F, 0.16F, 0.27F});
    canvas.each(u - 0.3, v - 0.3, u + 0.3, v + 0.3, [&](Colour &pixel, double x, double y) {
        const double along = -(x - u) * sunV + (y - v) * sunU; // along the edge
        const double out = (x - u) * sunU + (y - v) * sunV + 0.5 * along * along / globe.radius;
        pixel = pixel + Colour{0.62F, 0.76F, 1.0F} * (0.55 * std::exp(-std::abs(along) / 0.055) * bell(out, 0.0022)) +
                Colour{0.6F, 0.7F, 0.95F} * (0.13 * std::exp(-std::abs(out) / 0.03) * bell(along, 0.0022));
    });
}

/// A small moon, lit from the left by the same sun.
void paintMoon(Canvas &canvas)
{
    const Globe globe{1.25, 0.795, 0.03};
    const double lightX = -0.86;
    const double lightY = -0.1;
    const double lightZ = 0.12;
    const auto ground = [&](double x, double y) {
        double height = 0.5 * clouds(x * 3 + 5, y * 3, 5, 141);
        for (int i = 0; i < 60; ++i) {
            const double size = 0.035 + 0.16 * std::pow(lattice(i, 1, 163), 6);
            const double away = std::hypot(x - 2 * lattice(i, 2, 163) + 1, y - 2 * lattice(i, 3, 163) + 1) / size;
            height += size * (0.9 * bell(away - 1, 0.22) - 0.9 * smooth(1.1, 0.5, away));
        }
        return height;
    };
    canvas.each(globe.u - 0.04, globe.v - 0.04, globe.u + 0.04, globe.v + 0.04, [&](Colour &pixel, double u, double v) {
        const double x = (u - globe.u) / globe.radius;
        const double y = (v - globe.v) / globe.radius;
        const double distance = std::hypot(x, y);
        const double inside = smooth(1 + 0.0007 / globe.radius, 1 - 0.0007 / globe.radius, distance);
        if (inside <= 0)
            return;
        const double z = std::sqrt(std::max(0.0, 1 - distance * distance));
        const double slopeX = (ground(x + 0.02, y) - ground(x, y)) / 0.02;
        const double slopeY = (ground(x, y + 0.02) - ground(x, y)) / 0.02;
        const double light = clamped((x - 0.16 * slopeX) * lightX + (y - 0.16 * slopeY) * lightY + z * lightZ);
        const Colour rock = mix({0.36F, 0.36F, 0.41F}, {0.66F, 0.63F, 0.64F}, clouds(x * 2 + 3, y * 2 + 1, 4, 143));
        pixel = mix(pixel, rock * (1.8 * light) + Colour{0.018F, 0.018F, 0.032F}, inside);
    });
}

} // namespace

void paintSpace(Canvas &canvas)
{
    canvas.each([&](Colour &pixel, double u, double v) { pixel = sky(canvas.aspect() - u, v); });
    canvas.dimBehindCard(0.5);
    paintStars(canvas);
    paintPlanet(canvas);
    paintMoon(canvas);
}

} // namespace kelp::pictures
