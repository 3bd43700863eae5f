#include "ui/Blur.h"

#include "base/Memory.h"
#include "ui/BlankImage.h"

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace kelp {

namespace {

/// Eight bits and eight more for fractions: six roundings in a row would show in a faint glow.
using Level = std::uint16_t;
constexpr int fractionBits = 8;

/// Columns that are turned back into lines together: as many pixels as the processor fetches at once.
constexpr int stripWidth = 16;

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

/// A line of levels, the channels of a pixel side by side, and what blurs it.
class Line
{
public:
    Line(int count, int channels, const std::array<int, 3> &sides)
        : m_count(count), m_channels(channels), m_sides(sides), m_values(length()), m_averages(length())
    {
    }

    [[nodiscard]] Level *begin() { return m_values.data(); }
    [[nodiscard]] Level *end() { return m_values.data() + length(); }

    void blur()
    {
        for (const int side : m_sides) {
            if (side == 0)
                continue;
            for (int channel = 0; channel < m_channels; ++channel)
                averageLine(m_values.data() + channel, m_averages.data() + channel, m_count, m_channels, side);
            m_values.swap(m_averages);
        }
    }

private:
    [[nodiscard]] std::size_t length() const
    {
        return static_cast<std::size_t>(m_count) * static_cast<std::size_t>(m_channels);
    }

    int m_count;
    int m_channels;
    std::array<int, 3> m_sides;
    std::vector<Level> m_values;
    std::vector<Level> m_averages;
};

Level levelOf(uchar byte)
{
    return static_cast<Level>(byte << fractionBits);
}

uchar byteOf(Level level)
{
    return static_cast<uchar>((level + (1 << (fractionBits - 1))) >> fractionBits);
}

} // namespace

QImage blurred(const QImage &image, double radius)
{
    if (image.isNull() || blurReach(radius) == 0)
        return image;
    Q_ASSERT(image.format() == QImage::Format_Alpha8 || image.format() == QImage::Format_ARGB32_Premultiplied);
    const std::array<int, 3> sides = boxes(radius);
    const int width = image.width();
    const int height = image.height();
    const int channels = image.depth() / 8;
    // Blurred along the lines, one column after the other.
    const auto count = static_cast<std::size_t>(qsizetype{width} * height * channels);
    const auto columns = std::make_unique_for_overwrite<Level[]>(count);
    memory::populate(columns.get(), count * sizeof(Level));
    Line line(width, channels, sides);
    for (int y = 0; y < height; ++y) {
        const uchar *bytes = image.constScanLine(y);
        std::transform(bytes, bytes + std::ptrdiff_t{width} * channels, line.begin(), levelOf);
        line.blur();
        Level *target = columns.get() + std::ptrdiff_t{y} * channels;
        for (const Level *pixel = line.begin(); pixel != line.end(); pixel += channels) {
            std::copy_n(pixel, channels, target);
            target += std::ptrdiff_t{height} * channels;
        }
    }
    QImage result = blankImage(image.size(), image.format());
    result.setDevicePixelRatio(image.devicePixelRatio());
    Line column(height, channels, sides);
    std::vector<uchar> strip(static_cast<std::size_t>(stripWidth * height * channels));
    for (int left = 0; left < width; left += stripWidth) {
        const std::ptrdiff_t length = std::ptrdiff_t{std::min(stripWidth, width - left)} * channels; // of its lines
        for (std::ptrdiff_t at = 0; at < length; at += channels) {
            const Level *levels = columns.get() + (std::ptrdiff_t{left} * channels + at) * height;
            std::copy_n(levels, std::ptrdiff_t{height} * channels, column.begin());
            column.blur();
            uchar *target = strip.data() + at;
            for (const Level *pixel = column.begin(); pixel != column.end(); pixel += channels, target += length)
                std::transform(pixel, pixel + channels, target, byteOf);
        }
        for (int y = 0; y < height; ++y)
            std::copy_n(strip.data() + y * length, length, result.scanLine(y) + std::ptrdiff_t{left} * channels);
    }
    return result;
}

int blurReach(double radius)
{
    const std::array<int, 3> sides = boxes(radius);
    return sides[0] + sides[1] + sides[2];
}

} // namespace kelp
