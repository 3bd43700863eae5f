#include "themes/Backdrop.h"

#include "themes/Scatter.h"
#include "themes/SoftImage.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace kelp {

namespace {

/// Where nothing behind the window can be seen.
constexpr double desktopGrey = 0.2;
/// Black over it keeps the card readable on any desktop.
constexpr double dimAtTop = 0.55;
constexpr double dimAtBottom = 0.8;

constexpr double blurRadius = 40; // points; twice the deviation of the bell curve
constexpr int tileWidth = 64;

/// A fixed pattern of thresholds in 0…1, without visible structure (interleaved gradient noise).
double threshold(int x, int y)
{
    return fract(52.9829189 * fract(0.06711056 * x + 0.00583715 * y));
}

/// The mean of `2 * reach + 1` neighbours, for `count` pixels that lie `step` apart; beyond the ends it is mirrored.
void boxPass(SoftPixel *pixels, int count, std::ptrdiff_t step, int reach, std::vector<SoftPixel> &copy)
{
    copy.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        copy[static_cast<std::size_t>(i)] = pixels[i * step];
    const auto at = [&](int i) {
        const int mirrored = i < 0 ? -1 - i : i >= count ? 2 * count - 1 - i : i;
        return copy[static_cast<std::size_t>(std::clamp(mirrored, 0, count - 1))].lanes;
    };
    Floats sum{};
    for (int i = -reach; i <= reach; ++i)
        sum += at(i);
    for (int i = 0; i < count; ++i) {
        pixels[i * step].lanes = sum / static_cast<float>(2 * reach + 1);
        sum += at(i + reach + 1) - at(i - reach);
    }
}

/// Three box passes come close to a bell curve.
void blur(SoftImage &image, double deviation)
{
    const int reach = std::max(1, static_cast<int>(std::lround((std::sqrt(4 * deviation * deviation + 1) - 1) / 2)));
    std::vector<SoftPixel> copy;
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < image.height(); ++y)
            boxPass(image.row(y), image.width(), 1, reach, copy);
        for (int x = 0; x < image.width(); ++x)
            boxPass(image.row(0) + x, image.height(), image.width(), reach, copy);
    }
}

/// The middle of `picture` in the proportions of `size`.
QRectF filling(const QImage &picture, const QSizeF &size)
{
    const QSizeF part = size.scaled(picture.size(), Qt::KeepAspectRatio);
    return {QPointF((picture.width() - part.width()) / 2, (picture.height() - part.height()) / 2), part};
}

} // namespace

void Backdrop::soften(SoftImage &soft, const QImage &picture, const QSize &size, double density)
{
    const QSize small(soft.width(), soft.height());
    const QImage scaled = picture.copy(filling(picture, size).toAlignedRect())
                              .scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                              .convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < small.height(); ++y) {
        for (int x = 0; x < small.width(); ++x)
            soft.row(y)[x] = {SoftPixel::opaque(QColor(scaled.pixel(x, y)))};
    }
    blur(soft, blurRadius / 2 * density / soft.factor());
    const Floats black{0, 0, 0, 1};
    for (int y = 0; y < small.height(); ++y) {
        const double dim = std::lerp(dimAtTop, dimAtBottom, std::min(1.0, soft.down(y)));
        for (int x = 0; x < small.width(); ++x)
            soft.row(y)[x].cover(black, static_cast<float>(dim));
    }
}

/// From top to bottom it passes through only a dozen of the 256 levels, which shows as bands; so the levels are mixed
/// by a threshold per pixel.
QImage Backdrop::plain(int height)
{
    QImage tile(tileWidth, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        const double dim = dimAtTop + (dimAtBottom - dimAtTop) * (y + 0.5) / height;
        const double level = 255 * desktopGrey * (1 - dim);
        auto *line = reinterpret_cast<QRgb *>(tile.scanLine(y));
        for (int x = 0; x < tileWidth; ++x) {
            const int value = static_cast<int>(std::floor(level + threshold(x, y)));
            line[x] = qRgb(value, value, value);
        }
    }
    return tile;
}

} // namespace kelp
