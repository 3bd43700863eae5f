#include "ui/Blur.h"

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace kelp {

namespace {

/// Eight bits and eight more for fractions: six roundings in a row would show in a faint glow.
using Level = std::uint16_t;
constexpr int fractionBits = 8;

/// The pixels to either side of the three boxes. Boxes of odd width leave everything in its place; two widths mixed
/// come closest to the wanted deviation.
std::array<int, 3> boxes(double radius)
{
    const double variance = std::pow(std::max(0.0, radius) / 2, 2);
    // The sum of three boxes of width w has the variance (w² - 1) / 4.
    const int side = static_cast<int>((std::sqrt(4 * variance + 1) - 1) / 2);
    const double narrow = 2.0 * side + 1;
    // A box two pixels wider adds (w + 1) / 3.
    const double missing = variance - (narrow * narrow - 1) / 4;
    const int wider = std::clamp(static_cast<int>(std::lround(missing / ((narrow + 1) / 3))), 0, 3);
    return {side + (wider > 0 ? 1 : 0), side + (wider > 1 ? 1 : 0), side + (wider > 2 ? 1 : 0)};
}

/// The running mean of a line of `count` levels that lie `stride` apart.
void averageLine(const Level *from, Level *to, int count, int stride, int side)
{
    const auto width = static_cast<std::uint32_t>(2 * side + 1);
    const std::uint64_t inverse = ((std::uint64_t{1} << 32) + width / 2) / width;
    std::uint32_t sum = 0;
    for (int i = 0; i < std::min(side, count); ++i)
        sum += from[i * stride];
    for (int i = 0; i < count; ++i) {
        if (i + side < count)
            sum += from[(i + side) * stride];
        to[i * stride] = static_cast<Level>((sum * inverse + (std::uint64_t{1} << 31)) >> 32);
        if (i - side >= 0)
            sum -= from[(i - side) * stride];
    }
}

/// Levels of a picture, line by line, the channels of a pixel side by side.
struct Levels
{
    int width;
    int height;
    int channels;
    std::vector<Level> values{};
};

Levels levelsOf(const QImage &image)
{
    Levels result{image.width(), image.height(), image.depth() / 8};
    const auto lineLength = static_cast<std::size_t>(result.width * result.channels);
    result.values.resize(lineLength * static_cast<std::size_t>(result.height));
    auto value = result.values.begin();
    for (int y = 0; y < result.height; ++y) {
        const uchar *line = image.constScanLine(y);
        value = std::transform(line, line + lineLength, value,
                               [](uchar each) { return static_cast<Level>(each << fractionBits); });
    }
    return result;
}

/// Blurs along the lines and turns lines into columns, so that the second time does the columns.
Levels blurredAndTransposed(const Levels &levels, const std::array<int, 3> &sides)
{
    Levels result{levels.height, levels.width, levels.channels};
    result.values.resize(levels.values.size());
    const int channels = levels.channels;
    std::vector<Level> line(static_cast<std::size_t>(levels.width * channels));
    std::vector<Level> other(line.size());
    for (int y = 0; y < levels.height; ++y) {
        const auto start = levels.values.begin() + static_cast<std::ptrdiff_t>(line.size()) * y;
        std::copy(start, start + static_cast<std::ptrdiff_t>(line.size()), line.begin());
        for (const int side : sides) {
            if (side == 0)
                continue;
            for (int channel = 0; channel < channels; ++channel)
                averageLine(line.data() + channel, other.data() + channel, levels.width, channels, side);
            line.swap(other);
        }
        for (int x = 0; x < levels.width; ++x) {
            const std::ptrdiff_t target = (static_cast<std::ptrdiff_t>(x) * levels.height + y) * channels;
            std::copy_n(line.begin() + static_cast<std::ptrdiff_t>(x) * channels, channels,
                        result.values.begin() + target);
        }
    }
    return result;
}

} // namespace

QImage blurred(const QImage &image, double radius)
{
    if (image.isNull() || blurReach(radius) == 0)
        return image;
    Q_ASSERT(image.format() == QImage::Format_Alpha8 || image.format() == QImage::Format_ARGB32_Premultiplied);
    const std::array<int, 3> sides = boxes(radius);
    const Levels levels = blurredAndTransposed(blurredAndTransposed(levelsOf(image), sides), sides);
    QImage result(image.size(), image.format());
    result.setDevicePixelRatio(image.devicePixelRatio());
    const auto lineLength = static_cast<std::ptrdiff_t>(levels.width) * levels.channels;
    for (int y = 0; y < levels.height; ++y) {
        const auto start = levels.values.begin() + lineLength * y;
        std::transform(start, start + lineLength, result.scanLine(y), [](Level each) {
            return static_cast<uchar>((each + (1 << (fractionBits - 1))) >> fractionBits);
        });
    }
    return result;
}

int blurReach(double radius)
{
    const std::array<int, 3> sides = boxes(radius);
    return sides[0] + sides[1] + sides[2];
}

} // namespace kelp
