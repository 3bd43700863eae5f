#include "LofiDesk.h"

#include "Solids.h"

#include <array>
#include <cstring>
#include <iterator>

namespace kelp::pictures {

namespace {

// The eye is at the origin's height above the middle of the picture's width; what has z = 0 is seen in its true size.
constexpr double middleU = 0.8;
constexpr double eyeAway = 2.2;
constexpr double sillY = -0.36;
constexpr double paneZ = 0.33;
constexpr Vec lampAt{0.03, 0.2, -0.55};

enum class Thing {
    Sill,
    Ledge,
    Board,
    Pages,
    Mug,
    Coffee,
    Band,
    Cup,
    Cushion,
    Pot,
    Soil,
    Stem,
    Leaf,
};

struct Hit
{
    double distance = 1e9;
    Thing thing = Thing::Sill;
    int which = 0;

    void add(double other, Thing kind, int index = 0)
    {
        if (other < distance)
            *this = {other, kind, index};
    }
};

struct Book
{
    Vec middle;
    Vec half;
    double angle;
    bool showsPages; ///< turned so that the edges of its pages are in front
    Colour cloth;
    const char *title;
};

const Book books[] = {
    {{0.268, sillY + 0.0235, 0.03}, {0.15, 0.0235, 0.1}, -0.05, false, {0.075F, 0.2F, 0.23F}, "TIDES"},
    {{0.262, sillY + 0.0645, 0.03}, {0.132, 0.0175, 0.09}, 0.1, true, {0.4F, 0.13F, 0.11F}, ""},
    {{0.276, sillY + 0.0985, 0.035}, {0.118, 0.0165, 0.083}, -0.13, false, {0.25F, 0.25F, 0.41F}, "RAIN LETTERS"},
};
constexpr double booksTop = sillY + 0.115;

constexpr Vec mugFoot{0.485, sillY, -0.1};
constexpr double mugHigh = 0.088;

constexpr Vec potFoot{1.335, sillY, 0.02};
constexpr double potHigh = 0.108;

struct Leaf
{
    Vec root;
    Vec along;
    Vec side;
    Vec up;
    double length;
    double half;
    double bend;
};

struct Plant
{
    static constexpr int count = 19;
    std::array<Leaf, count> leaves;

    Plant()
    {
        for (int i = 0; i < count; ++i) {
            const double tier = i / (count - 1.0);
            const double turn = 2.39996 * i + 0.5 * lattice(i, 1, 61);
            const double rise = 0.35 + 0.95 * tier + 0.2 * (lattice(i, 2, 61) - 0.5);
            const Vec away{std::cos(rise) * std::cos(turn), std::sin(rise), std::cos(rise) * std::sin(turn) * 0.75};
            Leaf &leaf = leaves[static_cast<std::size_t>(i)];
            leaf.root = Vec{potFoot.x, sillY + potHigh - 0.008, potFoot.z} + unit(away) * (0.05 + 0.115 * tier);
            const double low = rise - 0.35;
            leaf.along = unit({std::cos(low) * std::cos(turn), std::sin(low), std::cos(low) * std::sin(turn) * 0.8});
            leaf.side = unit(cross(leaf.along, Vec{0.15 * (lattice(i, 3, 61) - 0.5), 1, 0.35}));
            leaf.up = cross(leaf.side, leaf.along);
            leaf.length = 0.108 + 0.035 * lattice(i, 4, 61);
            leaf.half = leaf.length * (0.27 + 0.05 * lattice(i, 5, 61));
            leaf.bend = 0.2 + 0.28 * lattice(i, 6, 61);
        }
    }
};
const Plant plant;

/// Where a place is on a leaf: x from the stalk (0) to the tip (1), y across in lengths, z out of its surface.
Vec onLeaf(const Leaf &leaf, Vec place)
{
    const Vec p = place - leaf.root;
    const double x = dot(p, leaf.along) / leaf.length;
    const double y = dot(p, leaf.side);
    const double bent = std::clamp(x, 0.0, 1.1);
    return {x, y, dot(p, leaf.up) + leaf.bend * leaf.length * bent * bent - 0.28 * std::abs(y)};
}

double leafHalf(const Leaf &leaf, double x)
{
    if (x <= 0 || x >= 1)
        return 0;
    return leaf.half * std::pow(std::sin(3.14159 * std::pow(x, 0.78)), 0.85);
}

double distanceTo(const Leaf &leaf, Vec place)
{
    const double around = length(place - leaf.root - leaf.along * (leaf.length * 0.5)) - leaf.length * 0.75;
    if (around > 0.02)
        return around;
    const Vec at = onLeaf(leaf, place);
    const double past = std::max(at.x - 1, -at.x) * leaf.length;
    const double out = std::max(std::abs(at.y) - leafHalf(leaf, at.x), past);
    return 0.55 * std::max(std::abs(at.z) - 0.0011, out);
}

/// Nearest solid; all but the sill itself.
Hit nearest(Vec p)
{
    Hit hit;
    hit.add(box(p - Vec{0.8, sillY, paneZ + 0.02}, {2, 0.014, 0.02}, 0.004), Thing::Ledge);
    // Books and what lies on them.
    const double pile = box(p - Vec{0.268, sillY + 0.13, 0.03}, {0.18, 0.14, 0.13}, 0.01);
    if (pile > 0.03) {
        hit.add(pile, Thing::Board);
    } else {
        int i = 0;
        for (const Book &book : books) {
            Vec q = turned(p - book.middle, book.angle);
            if (book.showsPages)
                q = q * -1 + Vec{0, 2 * q.y, 0};
            const double board = 0.0034;
            const Vec cover{q.x, std::abs(q.y) - book.half.y + board, q.z};
            hit.add(box(cover, {book.half.x, board, book.half.z}, 0.0022), Thing::Board, i);
            // The back is a little round.
            const double height = q.y / book.half.y;
            const Vec back{q.x, q.y, q.z + book.half.z - 0.005 + 0.006 * (1 - height * height)};
            hit.add(0.8 * box(back, {book.half.x, book.half.y, 0.005}, 0.003), Thing::Board, i);
            hit.add(box(q - Vec{0, 0, -0.004}, book.half - Vec{0.007, board, 0.006}, 0.001), Thing::Pages, i);
            ++i;
        }
        // Headphones, lying with the band up.
        Vec h = p - Vec{0.262, booksTop + 0.031, 0.03};
        h = turned(h, -0.5);
        const double lean = 0.28;
        h = {h.x, h.y * std::cos(lean) - h.z * std::sin(lean), h.y * std::sin(lean) + h.z * std::cos(lean)};
        const double arc = h.y > 0 ? std::hypot(h.x * 1.0, h.y * 0.86) - 0.062 : std::abs(h.x) - 0.062;
        const double lowEnd = std::max(0.0, -h.y);
        const Vec strap{arc, lowEnd, h.z};
        hit.add(0.85 * (std::hypot(std::hypot(strap.x, strap.y), std::max(0.0, std::abs(h.z) - 0.006)) - 0.0036),
                Thing::Band);
        const double wide = std::abs(h.x) - 0.062;
        const Vec cup{h.y + 0.004, wide - 0.003, h.z};
        hit.add(cylinder(cup, 0.0275, 0.0085, 0.006), Thing::Cup);
        hit.add(cylinder(cup + Vec{0, 0.0145, 0}, 0.0245, 0.008, 0.0075), Thing::Cushion);
    }
    // A cup of coffee.
    const Vec m = p - mugFoot;
    const double near = box(m - Vec{0.015, 0.045, 0}, {0.075, 0.05, 0.055}, 0.01);
    if (near > 0.03) {
        hit.add(near, Thing::Mug);
    } else {
        const double radius = 0.041 + 0.003 * smooth(0, 0.06, m.y) - 0.005 * smooth(0.014, 0, m.y);
        const Vec q{m.x, m.y - mugHigh / 2, m.z};
        const double outer = cylinder(q, radius, mugHigh / 2, 0.005);
        const double inner = cylinder(q - Vec{0, 0.008, 0}, radius - 0.0042, mugHigh / 2, 0.008);
        double body = std::max(outer, -inner);
        body = std::max(body, std::hypot(m.x, m.z) - radius + 0.00001 - 0.0005);
        const Vec lip{std::hypot(m.x, m.z) - radius + 0.0022, m.y - mugHigh + 0.001, 0};
        body = blended(body, length(lip) - 0.0024, 0.002);
        const Vec ear = turned(m - Vec{0.0, mugHigh * 0.52, 0}, 0.55);
        const double ring = std::hypot((ear.x - 0.046) * 1.05, ear.y * 0.88) - 0.0225;
        const double handle = ear.x > 0.03 ? std::hypot(ring, ear.z * 0.8) - 0.0052 : 1;
        hit.add(0.9 * blended(body, handle, 0.008), Thing::Mug);
        hit.add(cylinder(m - Vec{0, mugHigh - 0.02, 0}, radius - 0.003, 0.008, 0.0005), Thing::Coffee);
    }
    // A plant.
    const Vec b = p - potFoot;
    const double crown = length(b - Vec{0, 0.24, 0}) - 0.3;
    if (crown > 0.03) {
        hit.add(crown, Thing::Pot);
    } else {
        const double radius = 0.05 + 0.019 * b.y / potHigh;
        const Vec q{b.x, b.y - potHigh / 2 - 0.004, b.z};
        double pot = 0.95 * cylinder(q, radius, potHigh / 2, 0.003);
        pot = std::min(pot, cylinder(b - Vec{0, potHigh - 0.012, 0}, 0.0735, 0.016, 0.004));
        pot = std::max(pot, -cylinder(b - Vec{0, potHigh, 0}, 0.066, 0.014, 0.002));
        hit.add(pot, Thing::Pot);
        const double saucer = cylinder(b - Vec{0, 0.006, 0}, 0.073 + 0.35 * std::max(0.0, b.y), 0.006, 0.003);
        hit.add(0.9 * saucer, Thing::Pot, 1);
        const double crumbs = 0.002 * noise(p.x * 240, p.z * 240, 66);
        hit.add(cylinder(b - Vec{0, potHigh - 0.014 + crumbs, 0}, 0.067, 0.006, 0.001), Thing::Soil);
        int i = 0;
        const Vec heart{potFoot.x, sillY + potHigh - 0.008, potFoot.z};
        for (const Leaf &leaf : plant.leaves) {
            hit.add(rod(p, heart, leaf.root + leaf.along * 0.01, 0.0021), Thing::Stem, i);
            hit.add(distanceTo(leaf, p), Thing::Leaf, i++);
        }
    }
    return hit;
}

double gap(Vec p)
{
    return nearest(p).distance;
}

double gapWithSill(Vec p)
{
    return std::min(gap(p), p.y - sillY);
}

// Letters as strokes on a grid 4 wide and 6 high, counted from the lower left; two digits per point, blanks between.
struct Letter
{
    char name;
    const char *strokes;
};
constexpr Letter letters[] = {{'A', "00 26 40,12 32"},
                              {'D', "00 06 26 44 42 20 00"},
                              {'E', "40 00 06 46,03 33"},
                              {'I', "20 26"},
                              {'L', "06 00 40"},
                              {'N', "00 06 40 46"},
                              {'R', "00 06 36 45 44 33 03,23 40"},
                              {'S', "01 10 30 41 42 04 05 16 36 45"},
                              {'T', "20 26,06 46"}};

/// How much of a letter's stroke covers a place on a line of writing, `tall` high, that begins at x = 0.
double written(const char *text, double x, double y, double tall)
{
    const double unit = tall / 6;
    const int at = static_cast<int>(std::floor(x / (6.2 * unit)));
    if (at < 0 || at >= static_cast<int>(std::strlen(text)))
        return 0;
    const double inX = x / unit - at * 6.2;
    const double inY = y / unit;
    for (const Letter &letter : letters) {
        if (letter.name != text[at])
            continue;
        double nearest = 9;
        for (const char *s = letter.strokes; s[0] && s[1] && s[2] == ' '; s += s[5] == ',' ? 6 : 3) {
            const Vec from{s[0] - '0' + 0.0, s[1] - '0' + 0.0, 0};
            const Vec to{s[3] - '0' + 0.0, s[4] - '0' + 0.0, 0};
            nearest = std::min(nearest, rod({inX, inY, 0}, from, to, 0));
        }
        return smooth(0.62, 0.3, nearest);
    }
    return 0;
}

struct Surface
{
    Colour colour;
    double gloss = 0; ///< strength of what it mirrors
    double sharp = 20;
    double through = 0; ///< how much light comes through from behind
    Colour through2;
};

Colour woodAt(double x, double z)
{
    const double plank = std::floor(z / 0.19 + 0.35);
    const double shift = 7.3 * plank;
    const double warp = clouds(x * 1.3 + shift, z * 5, 4, 71);
    const double rings = std::abs(std::fmod(std::abs(z * 19 + warp * 3.4 + shift), 1.0) - 0.5) * 2;
    const double fibres = clouds(x * 7 + shift, z * 85, 3, 73);
    Colour wood = mix({0.13F, 0.08F, 0.052F}, {0.235F, 0.15F, 0.096F}, 0.3 * smooth(0.1, 0.9, rings) + 0.6 * warp);
    wood = wood * (0.8 + 0.36 * fibres);
    const double seam = std::abs(z / 0.19 + 0.35 - std::round(z / 0.19 + 0.35)) * 0.19;
    return wood * (0.35 + 0.65 * smooth(0.0004, 0.0022, seam));
}

Surface bookSurface(const Hit &hit, Vec p, Vec normal)
{
    const Book &book = books[hit.which];
    Vec q = turned(p - book.middle, book.angle);
    if (book.showsPages)
        q = {-q.x, q.y, -q.z};
    if (hit.thing == Thing::Pages) {
        const double sheet = noise(q.y * 1500, 3, 81) * 0.6 + noise(q.y * 700, (q.x + q.z) * 6, 82) * 0.4;
        const Colour paper = mix({0.74F, 0.65F, 0.5F}, {0.9F, 0.83F, 0.69F}, noise(q.x * 7, q.z * 7, 83));
        return {paper * (0.62 + 0.5 * sheet), 0.0, 8, 0, {}};
    }
    // Woven cloth.
    const double warp = std::sin((q.x + q.z * 0.2) * 2100) * std::sin((q.y + q.z) * 2100);
    const double worn = clouds(q.x * 16, (q.z + q.y * 3) * 16, 4, 84 + hit.which);
    Colour cloth = book.cloth * (0.8 + 0.1 * warp + 0.45 * worn);
    const double edge = smooth(0.008, 0.0, book.half.x - std::abs(q.x)) * smooth(0.35, 0.7, worn);
    cloth = mix(cloth, cloth * 1.5 + Colour{0.1F, 0.09F, 0.08F}, 0.7 * edge);
    const bool isBack = !book.showsPages && normal.z < -0.5;
    if (isBack) {
        double gold = 0;
        for (const double line : {0.022, 0.028, 0.058})
            gold = std::max(gold, smooth(0.0011, 0.0005, std::abs(book.half.x - std::abs(q.x) - line)));
        gold = std::max(gold, smooth(0.0042, 0.0034, std::hypot(std::abs(q.x) - book.half.x + 0.043, q.y)));
        const double tall = book.half.y * (std::strlen(book.title) > 8 ? 0.53 : 0.62);
        const double wide = static_cast<double>(std::strlen(book.title)) * 6.2 * tall / 6 - 2.2 * tall / 6;
        gold = std::max(gold, written(book.title, q.x + wide / 2, q.y + tall / 2, tall));
        gold *= 0.72 + 0.28 * smooth(0.3, 0.55, worn);
        const Colour foil{0.86F, 0.66F, 0.34F};
        return {mix(cloth, foil, gold), 0.05 + 0.5 * gold, 30, 0, {}};
    }
    return {cloth, 0.05, 10, 0, {}};
}

Surface surfaceAt(const Hit &hit, Vec p, Vec normal)
{
    switch (hit.thing) {
    case Thing::Sill:
        return {woodAt(p.x, p.z), 0.5, 60, 0, {}};
    case Thing::Ledge:
        return {woodAt(p.x, 0.4) * 0.55, 0.15, 30, 0, {}};
    case Thing::Board:
    case Thing::Pages:
        return bookSurface(hit, p, normal);
    case Thing::Mug: {
        const Vec m = p - mugFoot;
        const double angle = std::atan2(m.z, m.x);
        const double drip =
            0.034 + 0.012 * (noise(angle * 2.6 + 9, 1, 91) - 0.5) + 0.004 * noise(angle * 9 + 30, 2, 92);
        const Colour clay{0.3F, 0.185F, 0.12F};
        Colour glaze = mix({0.8F, 0.76F, 0.68F}, {0.72F, 0.66F, 0.56F}, clouds(angle * 3 + 9, m.y * 40, 3, 93));
        const double speck = noise(angle * 34 + 99, m.y * 780, 94);
        const double away = std::hypot(m.x, m.z);
        const double onBody = smooth(0.048, 0.045, away); // on the handle they would be drawn out into hoops
        glaze = mix(glaze, {0.25F, 0.16F, 0.1F}, 0.7 * onBody * smooth(0.77, 0.86, speck));
        Colour lower = mix({0.075F, 0.2F, 0.24F}, {0.12F, 0.3F, 0.33F}, clouds(angle * 2 + 5, m.y * 30, 3, 95));
        lower = mix(lower, {0.4F, 0.4F, 0.36F}, 0.6 * bell(m.y - drip, 0.004));
        const bool inside = away < 0.0385;
        Colour colour = inside ? glaze : mix(lower, glaze, smooth(drip - 0.0025, drip + 0.0025, m.y));
        const double foot = smooth(0.0085, 0.0065, m.y);
        colour = mix(colour, clay, foot);
        return {colour, 0.95 * (1 - foot), 190, 0, {}};
    }
    case Thing::Coffee:
        return {{0.06F, 0.027F, 0.012F}, 1, 300, 0, {}};
    case Thing::Band:
        return {{0.075F, 0.07F, 0.075F}, 0.35, 30, 0, {}};
    case Thing::Cup:
        return {{0.62F, 0.53F, 0.42F}, 0.5, 50, 0, {}};
    case Thing::Cushion:
        return {{0.09F, 0.062F, 0.052F}, 0.22, 14, 0, {}};
    case Thing::Pot: {
        const Vec b = p - potFoot;
        const double angle = std::atan2(b.z, b.x);
        const double bloom = clouds(angle * 2.2 + 9, b.y * 22, 5, 101);
        Colour clay = mix({0.52F, 0.235F, 0.13F}, {0.62F, 0.36F, 0.25F}, smooth(0.35, 0.75, bloom));
        clay = mix(clay, {0.66F, 0.56F, 0.48F}, 0.45 * smooth(0.55, 0.8, bloom) * smooth(0.1, 0.02, b.y));
        clay = clay * (0.86 + 0.2 * noise(angle * 2, b.y * 520, 102) + 0.1 * noise(angle * 90, b.y * 900, 103));
        return {clay, 0.1, 10, 0, {}};
    }
    case Thing::Soil:
        return {Colour{0.07F, 0.045F, 0.032F} * (0.5 + noise(p.x * 300, p.z * 300, 104)), 0.05, 10, 0, {}};
    case Thing::Stem:
        return {{0.16F, 0.2F, 0.075F}, 0.2, 30, 0.15, {0.3F, 0.35F, 0.1F}};
    case Thing::Leaf: {
        const Leaf &leaf = plant.leaves[static_cast<std::size_t>(hit.which)];
        const Vec at = onLeaf(leaf, p);
        const double across = std::abs(at.y) / leaf.half;
        // Side veins leave the middle one forwards, in arcs.
        const double phase = at.x * 8.5 - across * 1.5 - across * across * 0.7;
        const double vein =
            bell(phase - std::round(phase), 0.1) * smooth(0.02, 0.12, across) * smooth(1.1, 0.5, across);
        const double rib = bell(across, 0.055 * (1.25 - at.x));
        const double age = lattice(hit.which, 7, 61);
        Colour green = mix({0.11F, 0.25F, 0.12F}, {0.22F, 0.36F, 0.13F}, age);
        green = green * (0.75 + 0.55 * clouds(at.x * 7, at.y * 60 + hit.which, 4, 105));
        green = mix(green, {0.38F, 0.46F, 0.22F}, clamped(0.75 * rib + 0.3 * vein));
        const double puff = 1 - 0.35 * bell(phase - std::round(phase), 0.25);
        return {green * puff, 0.3, 34, 0.6,
                mix(Colour{0.2F, 0.42F, 0.09F}, {0.34F, 0.5F, 0.12F}, age) * (1 - 0.55 * clamped(rib + 0.55 * vein))};
    }
    }
    return {};
}

/// Where the pane is met by a ray, as a place in the picture.
Colour paneAlong(const Canvas &town, Vec from, Vec direction)
{
    const double way = (paneZ - from.z) / std::max(0.05, direction.z);
    const Vec at = from + direction * way;
    const double shrink = eyeAway / (eyeAway + paneZ);
    return town.sample(middleU + (at.x - middleU) * shrink, 0.5 - at.y * shrink);
}

/// What a polished thing mirrors: the window behind, the lamp, and else a dark room.
Colour around(const Canvas &town, Vec from, Vec direction)
{
    const Vec lamp = unit(lampAt - from);
    const double near = std::max(0.0, dot(direction, lamp));
    Colour room = Colour{0.05F, 0.03F, 0.022F} + Colour{1.0F, 0.6F, 0.3F} * (0.25 * std::pow(near, 6));
    if (direction.z <= 0)
        return room;
    return mix(room, paneAlong(town, from, direction) * 1.5, smooth(0, 0.12, direction.z));
}

Colour lit(const Canvas &town, const Hit &hit, Vec p, Vec normal, Vec view, bool fine)
{
    const Surface surface = surfaceAt(hit, p, normal);
    const bool isSill = hit.thing == Thing::Sill;
    const Vec toLamp = lampAt - p;
    const double away = length(toLamp);
    const Vec lamp = toLamp * (1 / away);
    const Colour lampColour = Colour{1.0F, 0.66F, 0.37F} * (1.15 / (0.26 + 0.46 * away * away));
    const Vec from = p + normal * 0.0012;
    const double lampSeen = fine ? seen(gap, from, lamp, 0.9, 0.11) : 0.8;
    const double open = fine ? openness(gapWithSill, p, normal, isSill ? 0.07 : 0.045) : 0.8;
    // The evening in the window: cool from above, with some of the town's warmth from below.
    const double skyward = clamped(0.16 + 0.6 * normal.z + 0.42 * normal.y);
    const double windowSeen = fine && isSill ? 0.25 + 0.75 * seen(gap, from, unit({0.02, 0.55, 0.8}), 0.5, 0.4) : 1;
    Colour light = lampColour * (std::max(0.0, dot(normal, lamp)) * lampSeen);
    light = light + Colour{0.2F, 0.25F, 0.43F} * (0.95 * skyward * open * windowSeen);
    light = light + Colour{0.3F, 0.17F, 0.13F} * (0.3 * clamped(normal.z * 0.7 + 0.3) * open);
    light = light + Colour{0.055F, 0.036F, 0.028F} * open;
    Colour result = surface.colour * light;
    if (surface.through > 0) {
        const double behind = std::max(0.0, -dot(normal, lamp));
        result = result + surface.through2 * lampColour * (surface.through * 0.75 * behind * (0.35 + 0.65 * lampSeen));
        result = result + surface.through2 * Colour{0.26F, 0.33F, 0.5F} *
                              (surface.through * (0.9 + 1.3 * clamped(0.5 - 0.5 * normal.z)) * open);
    }
    // Polish.
    const double facing = clamped(-dot(normal, view));
    const double fresnel = 0.045 + 0.955 * std::pow(1 - facing, 5);
    const Vec half = unit(lamp - view);
    result = result + lampColour * (surface.gloss * 0.016 * (surface.sharp + 6) * lampSeen *
                                    std::pow(std::max(0.0, dot(normal, half)), surface.sharp) * (0.25 + fresnel));
    if (!isSill && surface.gloss > 0)
        result = result + around(town, p, mirrored(view, normal)) * (surface.gloss * fresnel * open);
    // Cool light of the window that grazes edges.
    const double edge = std::pow(1 - facing, 3.0) * clamped(0.75 * normal.z + 0.6 * normal.y + 0.4);
    if (!isSill)
        result = result + Colour{0.42F, 0.5F, 0.78F} * (0.62 * edge * open) +
                 surface.colour * Colour{0.42F, 0.5F, 0.78F} * (0.7 * edge * open);
    return result;
}

Seen look(const Canvas &town, double u, double v)
{
    const Vec eye{middleU, 0, -eyeAway};
    const Vec view = unit({u - middleU, 0.5 - v, eyeAway});
    const double toPane = (paneZ + eyeAway) / view.z;
    double toSill = view.y < 0 ? sillY / view.y : 1e9;
    const double way = march(gap, eye, view, 1.2, std::min(toPane + 0.06, toSill));
    if (way > 0) {
        const Vec p = eye + view * way;
        const Hit hit = nearest(p);
        Vec normal = normalAt(gap, p);
        if (dot(normal, view) > 0)
            normal = normal * -1;
        return {lit(town, hit, p, normal, view, true), 1};
    }
    if (toSill > toPane)
        return {};
    const Vec p = eye + view * toSill;
    Hit hit;
    Colour wood = lit(town, hit, p, {0, 1, 0}, view, true);
    // Its varnish mirrors what stands on it, and the window; the farther away that is, the less clear.
    const double ripple = 0.009 * (clouds(p.x * 9, p.z * 60, 3, 76) - 0.47);
    const Vec bounce = unit(mirrored(view, unit({ripple * 0.6, 1, ripple})));
    const double fresnel = 0.09 + 0.91 * std::pow(1 - bounce.y, 4);
    const Vec from = p + Vec{0, 0.0008, 0};
    const double far = march(gap, from, bounce, 0.0005, 0.5);
    Colour mirror;
    if (far > 0) {
        const Vec q = from + bounce * far;
        const Hit other = nearest(q);
        Vec normal = normalAt(gap, q);
        if (dot(normal, bounce) > 0)
            normal = normal * -1;
        mirror = mix(lit(town, other, q, normal, bounce, false), paneAlong(town, p, bounce), smooth(0, 0.2, far));
    } else {
        mirror = paneAlong(town, p, bounce) * 1.3;
    }
    return {wood + mirror * (0.85 * fresnel), 1};
}

} // namespace

void paintDesk(Canvas &canvas)
{
    Canvas town = canvas;
    town.blur(0.009);
    constexpr int fine = 2;
    cover(canvas, 0.4, 1, fine, [&](double u, double v) { return look(town, u, v); });
    // Steam, lit from the left.
    const double cupU = middleU + (mugFoot.x - middleU) * eyeAway / (eyeAway + mugFoot.z);
    const double cupV = 0.5 - (sillY + mugHigh - 0.008) * eyeAway / (eyeAway + mugFoot.z);
    canvas.each(cupU - 0.12, cupV - 0.26, cupU + 0.12, cupV, [&](Colour &pixel, double u, double v) {
        const double up = (cupV - v) / 0.24;
        double wisps = 0;
        for (int i = 0; i < 2; ++i) {
            const double sway = (0.012 + 0.03 * up) * (noise(i * 7.3 + 2, up * 2.6 + i, 51) - 0.5) * 2;
            const double way = (u - cupU + 0.012 - 0.022 * i - sway) / (0.007 + 0.02 * up);
            const double curl = 0.35 + 0.65 * clouds(u * 30 + 5 * up, v * 13, 4, 52 + i);
            wisps += bell(way, 1) * curl * curl * smooth(0, 0.12, up) * smooth(1, 0.2, up);
        }
        pixel = pixel + mix({0.62F, 0.5F, 0.42F}, {0.42F, 0.45F, 0.58F}, up) * (0.95 * wisps);
    });
}

} // namespace kelp::pictures
