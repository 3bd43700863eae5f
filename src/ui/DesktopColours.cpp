#include "ui/DesktopColours.h"

#include <QPalette>

#include <algorithm>
#include <cmath>

namespace kelp {

namespace {

constexpr double readableContrast = 4.5; // of texts; WCAG 2.1, 1.4.3
constexpr double visibleContrast = 3;    // of controls; WCAG 2.1, 1.4.11

QColor mixed(const QColor &ground, const QColor &over, double share)
{
    const auto part = [share](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * share)); };
    return QColor(part(ground.red(), over.red()), part(ground.green(), over.green()), part(ground.blue(), over.blue()));
}

QColor faded(QColor colour, double opacity)
{
    colour.setAlphaF(static_cast<float>(opacity));
    return colour;
}

double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

/// `colour`, moved towards `end` no further than it takes to stand out from `ground`.
QColor standingOut(const QColor &colour, const QColor &end, const QColor &ground, double ratio)
{
    for (double share = 0; share < 1; share += 0.04) {
        const QColor candidate = mixed(colour, end, share);
        if (contrast(candidate, ground) >= ratio)
            return candidate;
    }
    return end;
}

} // namespace

double contrast(const QColor &a, const QColor &b)
{
    const double x = luminance(a);
    const double y = luminance(b);
    return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

DesktopColours DesktopColours::of(const QPalette &palette)
{
    DesktopColours colours;
    colours.window = palette.color(QPalette::Active, QPalette::Window);
    colours.primary = palette.color(QPalette::Active, QPalette::WindowText);
    colours.dark = luminance(colours.window) < luminance(colours.primary);
    const QColor end = colours.dark ? Qt::white : Qt::black; // where contrast grows
    colours.group = mixed(colours.window, Qt::white, colours.dark ? 0.055 : 0.9);
    colours.field = colours.dark ? mixed(colours.window, Qt::white, 0.1) : QColor(Qt::white);
    // What is readable on the ground that is nearer to the text is readable on the other, too.
    const QColor &ground = colours.dark ? colours.group : colours.window;
    colours.hairline = faded(colours.primary, colours.dark ? 0.11 : 0.1);
    colours.outline = standingOut(mixed(ground, colours.primary, 0.3), end, ground, visibleContrast);
    colours.secondary = standingOut(mixed(ground, colours.primary, 0.62), end, ground, readableContrast + 0.4);
    colours.hover = faded(colours.primary, 0.08);
    colours.iconHover = faded(colours.primary, 0.1);
    colours.trackOff = mixed(ground, colours.primary, colours.dark ? 0.26 : 0.22);

    const QColor accent = palette.color(QPalette::Active, QPalette::Highlight);
    const bool whiteOnAccent = contrast(accent, Qt::white) >= visibleContrast;
    colours.accentText = whiteOnAccent ? Qt::white : Qt::black;
    colours.accent = standingOut(accent, whiteOnAccent ? Qt::black : Qt::white, colours.accentText, readableContrast);
    colours.accentInk = standingOut(accent, end, ground, readableContrast);
    colours.danger = QColor(0xC6, 0x28, 0x28);
    colours.dangerText = Qt::white;
    colours.dangerInk =
        standingOut(colours.dark ? QColor(0xFF, 0x7B, 0x72) : QColor(0xC0, 0x1C, 0x28), end, ground, readableContrast);
    colours.warningInk =
        standingOut(colours.dark ? QColor(0xFF, 0xA9, 0x4D) : QColor(0xC7, 0x5B, 0x00), end, ground, readableContrast);
    return colours;
}

} // namespace kelp
