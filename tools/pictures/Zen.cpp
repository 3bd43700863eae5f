#include "Solids.h"

namespace kelp::pictures {

namespace {

constexpr double waterline = 0.7;
constexpr double sunU = 1.425;
constexpr double sunV = 0.52;

/// A sky before sunrise, dark enough above for white text.
Colour sky(double u, double v)
{
    const Colour top{0.075F, 0.135F, 0.25F};
    const Colour middle{0.19F, 0.235F, 0.32F};
    const Colour low{0.5F, 0.375F, 0.37F};
    Colour colour = mix(mix(top, middle, smooth(-0.05, 0.48, v)), low, smooth(0.36, 0.68, v));
    const double dx = u - sunU;
    const double dy = (v - sunV) * 1.5;
    const double distance = std::sqrt(dx * dx + dy * dy);
    colour = colour + Colour{0.44F, 0.215F, 0.115F} * std::exp(-distance * 4.2);
    colour = colour + Colour{0.4F, 0.27F, 0.17F} * std::exp(-distance * 15);
    // Thin, long clouds that catch the light from below.
    const double veil = clouds(u * 1.3 + v * 0.8, v * 9 - u * 0.5, 6, 31);
    const double lit = smooth(0.5, 0.78, veil) * smooth(0.02, 0.3, v) * (1 - smooth(0.44, 0.6, v));
    return colour + Colour{0.15F, 0.1F, 0.1F} * (lit * (0.45 + 2.0 * std::exp(-distance * 4.2)));
}

struct Range
{
    double foot;
    double height;
    double stretch;
    int seed;
    Colour body;
};

double ridge(const Range &range, double u)
{
    const double shape = 0.72 * clouds(u * range.stretch, range.seed * 3.1, 3, range.seed) +
                         0.28 * crests(u * range.stretch * 2.3, range.seed * 1.7, 5, range.seed + 50);
    return range.foot - range.height * shape;
}

Colour land(double u, double v)
{
    static const Range ranges[] = {{0.735, 0.34, 1.5, 3, {0.335F, 0.325F, 0.385F}},
                                   {0.735, 0.27, 2.1, 11, {0.25F, 0.265F, 0.335F}},
                                   {0.74, 0.2, 2.7, 23, {0.165F, 0.195F, 0.26F}},
                                   {0.735, 0.115, 3.9, 37, {0.09F, 0.115F, 0.16F}}};
    Colour colour = sky(u, v);
    const double warm = std::exp(-std::abs(u - sunU) * 1.9);
    for (const Range &range : ranges) {
        const double top = ridge(range, u);
        const double inside = smooth(top - 0.0012, top + 0.0012, v);
        const double mist = smooth(top, waterline + 0.015, v);
        const Colour haze = Colour{0.36F, 0.36F, 0.42F} + Colour{0.2F, 0.1F, 0.035F} * warm;
        Colour body = mix(range.body + Colour{0.1F, 0.045F, 0.01F} * warm, haze, 0.78 * mist * mist);
        body = body * (0.94 + 0.12 * clouds(u * 24, v * 40, 4, range.seed + 7));
        colour = mix(colour, body, inside);
    }
    // A bank of mist where the land meets the water.
    const double bank = bell(v - waterline + 0.012, 0.035) * smooth(0.3, 0.72, clouds(u * 2.4, v * 11, 5, 77));
    return mix(colour, Colour{0.42F, 0.42F, 0.475F} + Colour{0.22F, 0.11F, 0.03F} * warm, 0.75 * bank);
}

/// Still water: what stands above it, upside down, drawn out by ripples. `push` moves the mirrored place upwards.
Colour water(const Canvas &above, double u, double v, double push)
{
    const double depth = v - waterline;
    const double near = depth / (1 - waterline);
    const double wave = clouds(u * 5 / (0.15 + near), 26 * std::log(0.05 + depth), 4, 91) - 0.47;
    const double mirrored = waterline - depth * 1.25 + wave * 0.11 * near - push;
    const double aside = u + wave * 0.02 * near;
    const double soft = 0.004 + 0.018 * near;
    Colour seen = above.sample(aside, mirrored) * 0.4 + above.sample(aside, mirrored - soft) * 0.3 +
                  above.sample(aside, mirrored + soft) * 0.3;
    const Colour deep = mix({0.08F, 0.105F, 0.145F}, {0.022F, 0.032F, 0.05F}, near);
    seen = mix(seen * 0.88, deep, 0.12 + 0.56 * near);
    const double glitter = smooth(0.1, 0.24, wave) * std::exp(-std::abs(u - sunU) * 4.2) * (1 - near * 0.7);
    // Ripples break the sun up into a column of light, broader and more torn the nearer they are.
    const double torn = clouds(u * 16 / (0.25 + near), 60 * std::log(0.05 + depth), 4, 97);
    const double column = bell(u - sunU + wave * (0.02 + 0.16 * near), 0.018 + 0.05 * near);
    const double sparks = column * (0.18 + 0.82 * smooth(0.44, 0.62, torn)) * (1 - 0.35 * near);
    return seen + Colour{0.34F, 0.19F, 0.1F} * glitter + Colour{0.42F, 0.27F, 0.16F} * sparks +
           Colour{0.06F, 0.055F, 0.06F} * bell(depth, 0.004);
}

/// Veils of mist that lie on the water, one behind the other.
void addMist(Canvas &canvas, double v, double high, double strength, int seed)
{
    canvas.each(0, v - 3 * high, canvas.aspect(), v + 3 * high, [&](Colour &pixel, double u, double y) {
        const double drawn = clouds(u * 2.1 + seed, y * 13, 5, seed);
        const double veil = bell(y - v - 0.02 * (drawn - 0.5), high) * smooth(0.3, 0.75, drawn);
        const double warm = std::exp(-std::abs(u - sunU) * 1.9);
        const Colour mist = Colour{0.33F, 0.355F, 0.42F} + Colour{0.26F, 0.13F, 0.05F} * warm;
        pixel = mix(pixel, mist, strength * veil);
    });
}

// The stones stand in a space with the eye over the water; what is `eyeAway` away is seen in its true size.
constexpr double eyeAway = 1.7;
constexpr double eyeHigh = 0.142;
constexpr double middleU = 0.8;

Vec rayThrough(double u, double v)
{
    return unit({u - middleU, waterline - v, eyeAway});
}

struct Stone
{
    Vec middle;
    Vec radii;
    double turn;
    double lean;
    int seed;
    Colour rock;
    bool inWater;
};

/// A stone seen at (u, v), where v is its waterline, of a size as measured in the picture.
Stone inWater(double u, double v, double wide, double high, double lean, int seed, Colour rock)
{
    const double z = eyeHigh * eyeAway / (v - waterline);
    const double scale = z / eyeAway;
    return {{middleU + (u - middleU) * scale, 0.3 * high * scale, z},
            {wide * scale, high * scale, wide * scale * 0.78},
            0.2 * lattice(seed, 1, 3),
            lean,
            seed,
            rock,
            true};
}

/// A stone of the pile, `y` above the water.
Stone piled(double u, double y, double wide, double high, double lean, int seed, Colour rock)
{
    return {{u, y, eyeAway}, {wide, high, wide * 0.8}, 0.5 * lattice(seed, 1, 3), lean, seed, rock, y < 0.05};
}

constexpr Colour slate{0.23F, 0.26F, 0.3F};
constexpr Colour basalt{0.19F, 0.205F, 0.225F};
constexpr Colour sand{0.34F, 0.305F, 0.275F};
const Stone stones[] = {
    piled(0.262, 0.028, 0.142, 0.056, 0.02, 3, basalt),  piled(0.27, 0.107, 0.103, 0.0355, -0.05, 7, slate),
    piled(0.258, 0.1635, 0.078, 0.0285, 0.07, 12, sand), piled(0.266, 0.2085, 0.053, 0.022, -0.06, 18, basalt),
    piled(0.262, 0.2435, 0.0305, 0.0155, 0.1, 25, sand), inWater(1.345, 0.899, 0.09, 0.034, 0.02, 41, slate),
    inWater(1.475, 0.86, 0.05, 0.02, -0.04, 44, basalt), inWater(1.25, 0.868, 0.03, 0.0125, 0.05, 46, sand),
    inWater(0.487, 0.882, 0.052, 0.02, 0.03, 47, slate), inWater(1.235, 0.809, 0.027, 0.01, 0, 52, basalt),
    inWater(0.092, 0.914, 0.072, 0.03, 0.05, 58, sand)};

Vec inStone(const Stone &stone, Vec place)
{
    const Vec p = turned(place - stone.middle, stone.turn);
    const double c = std::cos(stone.lean);
    const double s = std::sin(stone.lean);
    return {(p.x * c + p.y * s) / stone.radii.x, (p.y * c - p.x * s) / stone.radii.y, p.z / stone.radii.z};
}

/// Rounder than an ellipse, as river stones are, and a little uneven.
double distanceTo(const Stone &stone, Vec place)
{
    const double around = length(place - stone.middle) - stone.radii.x * 1.2;
    if (around > 0.03)
        return around;
    const Vec q = inStone(stone, place);
    const double power = 2.35;
    const double reach = std::pow(
        std::pow(std::abs(q.x), power) + std::pow(std::abs(q.y), power) + std::pow(std::abs(q.z), power), 1 / power);
    const double uneven = 0.17 * (noise(q.x * 0.9 + q.z * 0.5 + stone.seed, q.y * 0.5 - q.z * 0.7, stone.seed) - 0.5) +
                          0.05 * (noise(q.x * 2.3 + stone.seed, q.z * 2 + q.y, stone.seed + 1) - 0.5);
    const Vec steep{q.x / stone.radii.x, q.y / stone.radii.y, q.z / stone.radii.z};
    return (reach - 1 - uneven) * 0.72 * length(q) / std::max(1e-6, length(steep));
}

struct Nearest
{
    double distance = 1e9;
    const Stone *stone = nullptr;
};

Nearest nearest(Vec place)
{
    Nearest result;
    for (const Stone &stone : stones) {
        const double distance = distanceTo(stone, place);
        if (distance < result.distance)
            result = {distance, &stone};
    }
    return result;
}

double gap(Vec place)
{
    return nearest(place).distance;
}

double gapWithWater(Vec place)
{
    return std::min(gap(place), place.y + 0.002);
}

/// The land and the sky in a direction; behind the eye there is only the sky.
Colour around(const Canvas &above, Vec direction)
{
    const Colour zenith{0.115F, 0.155F, 0.235F};
    const double ahead = std::max(0.12, direction.z);
    const double v = std::min(waterline - 0.01, waterline - std::abs(direction.y) / ahead * eyeAway);
    const Colour seen = above.sample(middleU + direction.x / ahead * eyeAway, v);
    return mix(zenith, seen, smooth(-0.1, 0.35, direction.z));
}

/// Wet rock under the sky before sunrise: dark below, where the water has been, with moss on it.
Colour lit(const Canvas &above, const Stone &stone, Vec p, Vec normal, Vec view)
{
    const Vec q = inStone(stone, p);
    const double open = openness(gapWithWater, p, normal, 0.05);
    const double tone = clouds(q.x * 1.6 + stone.seed, q.y * 1.2 + q.z * 1.3, 4, stone.seed + 5);
    const double layers = clouds(q.x * 1.1, (q.y + 0.25 * q.z) * 7 + stone.seed, 4, stone.seed + 6);
    const double grain = clouds(p.x * 420, (p.y + p.z) * 420, 2, stone.seed + 8);
    Colour rock = stone.rock * (0.72 + 0.36 * tone + 0.22 * layers) * (0.93 + 0.1 * grain);
    // A vein of quartz now and then.
    const double course = q.y + 0.5 * q.x + 0.3 * (clouds(q.x * 2 + 3, q.z * 2, 3, stone.seed + 9) - 0.5) - 0.15;
    if (stone.seed % 5 == 2)
        rock = mix(rock, {0.46F, 0.45F, 0.44F}, 0.55 * bell(course, 0.035) * smooth(0.25, 0.6, tone));
    const double tide = 0.016 + 0.014 * (noise(p.x * 60 + stone.seed, p.z * 60, stone.seed + 10) - 0.5);
    const double wet = stone.inWater ? smooth(tide + 0.006, tide - 0.004, p.y) : 0;
    rock = rock * (1 - 0.5 * wet);
    // Moss: at the foot, and where dew stays on top.
    const double patch = clouds(p.x * 30 + stone.seed, (p.z + p.y * 0.7) * 30, 4, stone.seed + 11);
    const double low = stone.inWater ? smooth(0.042, 0.014, p.y) * smooth(0.002, 0.01, p.y) : 0;
    const double shelf = smooth(0.45, 0.9, normal.y) * (stone.seed % 2 == 1 && stone.inWater ? 0.08 : 0.0);
    const double moss = smooth(0.62, 0.44, patch / (0.25 + 0.8 * clamped(low + shelf)));
    const double tuft = clouds(p.x * 330, (p.y + p.z) * 330, 3, 61);
    rock = mix(rock, mix({0.05F, 0.075F, 0.03F}, {0.18F, 0.2F, 0.085F}, tuft), 0.85 * moss);
    const Vec shaped = unit(normal + Vec{noise(p.x * 500, p.y * 500, 62) - 0.5, 0.3 * (tuft - 0.4), 0} * (0.7 * moss));

    // Not quite from where the sun is: a little more from the side, to draw out the shapes.
    const Vec dawn = unit({0.8, 0.3, 0.22});
    const double dawnSeen = seen(gap, p + normal * 0.002, dawn, 0.5, 0.25);
    Colour light = Colour{0.62F, 0.75F, 0.98F} * (1.75 * clamped(0.36 + 0.64 * shaped.y) * open);
    light = light + Colour{0.5F, 0.56F, 0.68F} *
                        (0.85 * clamped(0.25 + 0.75 * dot(shaped, unit({-0.5, 0.55, -0.65}))) * (0.4 + 0.6 * open));
    light = light + Colour{2.6F, 1.45F, 0.85F} * (1.25 * clamped(0.05 + 0.95 * dot(shaped, dawn)) * dawnSeen * open);
    // From the water below.
    light = light + Colour{0.26F, 0.24F, 0.28F} * (1.0 * clamped(0.15 - shaped.y) * open);
    Colour result = rock * light;
    const double facing = clamped(-dot(shaped, view));
    const double fresnel = 0.03 + 0.97 * std::pow(1 - facing, 5);
    const double gloss = (0.3 + 0.7 * wet) * (1 - 0.9 * moss);
    result = result + around(above, mirrored(view, shaped)) * (gloss * fresnel * (0.35 + 0.65 * open) * 1.5);
    const Vec half = unit(dawn - view);
    const double shine = std::max(0.0, dot(shaped, half));
    result = result + Colour{1.0F, 0.6F, 0.36F} *
                          (gloss * dawnSeen * (0.16 * std::pow(shine, 18) + 0.5 * wet * std::pow(shine, 90)));
    const Vec sky = unit(unit({-0.25, 1, 0.1}) - view);
    result = result + Colour{0.5F, 0.6F, 0.78F} * (gloss * open * 0.2 * std::pow(std::max(0.0, dot(shaped, sky)), 14));
    // The dawn, grazing the side that looks towards it.
    const double graze = std::pow(1 - facing, 2.6) * clamped(0.9 * shaped.x + 0.35 * shaped.y + 0.1 * shaped.z);
    result = result + Colour{0.95F, 0.5F, 0.3F} * (0.5 * graze * (0.25 + 0.75 * dawnSeen) * (0.3 + 0.7 * open));
    // Velvet: moss glows at its edge against the light.
    return result + Colour{0.2F, 0.17F, 0.07F} * (moss * std::pow(1 - facing, 2.5) * 0.4 * open);
}

Seen look(const Canvas &above, double u, double v)
{
    const Vec eye{middleU, eyeHigh, 0};
    const Vec view = rayThrough(u, v);
    const double toWater = view.y < 0 ? -eyeHigh / view.y : 1e9;
    const double far = 2.6;
    const double way = march(gap, eye, view, 0.9, std::min(toWater, far));
    if (way > 0) {
        const Vec p = eye + view * way;
        return {lit(above, *nearest(p).stone, p, normalAt(gap, p, 0.0012), view), 1};
    }
    if (toWater > far)
        return {};
    const Vec p = eye + view * toWater;
    const double away = gap(p);
    // Rings run out from the stones; the water stands a little higher where it touches them.
    const double rings = std::cos(away * 330) * std::exp(-away * 22) * smooth(0, 0.012, away);
    const double wave = clouds(u * 26, 90 * std::log(0.05 + v - waterline), 3, 92) - 0.47;
    const double tilt = 0.016 * rings + 0.05 * wave;
    const Vec bounce = unit(mirrored(view, unit({0.5 * tilt, 1, tilt})));
    const double close = std::exp(-away * 16);
    Colour surface = water(above, u, v, -0.085 * rings) * (1 - 0.4 * std::exp(-away * 70));
    const double met = march(gap, p + Vec{0, 0.0006, 0}, bounce, 0.0006, 0.7);
    double part = close;
    if (met > 0) {
        const Vec q = p + bounce * met;
        const Colour image = lit(above, *nearest(q).stone, q, normalAt(gap, q, 0.0012), bounce);
        const double clear = 0.72 * (1 - 0.55 * smooth(0.02, 0.3, met));
        surface = mix(surface * (1 - clear * 0.9), image, clear * 0.85);
        part = 1;
    }
    surface = surface + Colour{0.5F, 0.47F, 0.5F} * (0.1 * std::max(0.0, rings));
    surface = surface + Colour{0.2F, 0.2F, 0.22F} * (0.55 * smooth(0.0035, 0.0015, away));
    return {surface, part};
}

} // namespace

void paintZen(Canvas &canvas)
{
    canvas.each([](Colour &pixel, double u, double v) { pixel = land(u, std::min(v, waterline)); });
    const Canvas mirrored = canvas;
    // A pale sun, half in the haze.
    canvas.each(sunU - 0.1, sunV - 0.1, sunU + 0.1, sunV + 0.1, [](Colour &pixel, double u, double v) {
        const double distance = std::hypot(u - sunU, v - sunV);
        const double ground = ridge({0.735, 0.34, 1.5, 3, {}}, u);
        pixel = pixel + Colour{0.4F, 0.32F, 0.24F} *
                            (smooth(0.0335, 0.0305, distance) * smooth(ground + 0.002, ground - 0.002, v));
    });
    const Canvas above = canvas;
    canvas.each(0, waterline, canvas.aspect(), 1,
                [&](Colour &pixel, double u, double v) { pixel = water(mirrored, u, v, 0); });
    addMist(canvas, 0.715, 0.016, 0.5, 111);
    addMist(canvas, 0.755, 0.014, 0.3, 113);
    canvas.dimBehindCard(0.43);
    cover(canvas, 0.5, 1, 2, [&](double u, double v) { return look(above, u, v); });
    addMist(canvas, 0.858, 0.022, 0.14, 117);
}

} // namespace kelp::pictures
