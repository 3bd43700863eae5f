#include "themes/PictureLayer.h"

#include "themes/SoftImage.h"
#include "themes/WideLanes.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace kelp {

namespace {

constexpr double meanScale = 1.1;
constexpr double scaleSwing = 0.05;

constexpr double vignetteOpacity = 0.45;
constexpr double vignetteStart = 0.5; // of the way from the middle to a corner
constexpr double vignetteEnd = 1.05;

/// Where a target column or row takes its colour from: between this source pixel and the next.
struct Tap
{
    int index;
    std::int16_t part; ///< in 1/32768
};

Tap tapAt(int place, int target, int source, double scale, double shift)
{
    const double inView = ((place + 0.5) / target - shift - 0.5) / scale + 0.5;
    const double position = std::clamp(inView * source - 0.5, 0.0, source - 1.0);
    const int index = std::clamp(static_cast<int>(position), 0, source - 2);
    return {index, static_cast<std::int16_t>(std::min((position - index) * 32768, 32767.0))};
}

Words eight(std::int16_t value)
{
    return Words{value, value, value, value, value, value, value, value};
}

/// Where each column of the target takes its colour from.
struct Columns
{
    int first = 0; ///< of the source pixels that are needed
    int end = 0;
    std::vector<int> left;           ///< the pixel that is blended with its right neighbour, counted from the first
    std::vector<std::int16_t> parts; ///< how much of the neighbour, in 1/32768, for each of the four channels

    Columns(int target, int source, const Drift &drift)
    {
        const int whole = (target + 7) & ~7; // columns are worked on in groups
        for (int x = 0; x < whole; ++x) {
            const Tap tap = tapAt(std::min(x, target - 1), target, source, drift.scale, drift.right);
            left.push_back(tap.index);
            parts.insert(parts.end(), 4, tap.part);
        }
        first = left.front();
        end = left.back() + 2;
        for (int &each : left)
            each -= first;
    }
};

/// Two rows of the source, and how much of the lower one is seen, in 1/128.
struct Band
{
    const std::uint32_t *upper;
    const std::uint32_t *lower;
    std::int16_t part;
};

/// What a row of the target is made of.
struct Row
{
    const std::int16_t *picture; ///< the columns' pixels, channels 0…32640
    SoftImage::Rows::Between veil;
    const std::int16_t *noise;
    std::uint32_t *target;
    std::uint32_t *copy; ///< of the finished row; may be null
};

/// The source's pixels from `from` up to `to`, blended vertically; channels 0…32640.
void blend(const Band &band, int from, int to, std::int16_t *blended)
{
    const Words ofUpper = eight(static_cast<std::int16_t>(128 - band.part));
    const Words ofLower = eight(band.part);
    for (int x = from; x < to; x += 2, blended += 8) {
        if (x + 1 == to) // the last one has no neighbour to be read with
            --x, blended -= 4;
        storeWords(blended, unpackPixels(band.upper + x) * ofUpper + unpackPixels(band.lower + x) * ofLower);
    }
}

/// `colour` with `veil` over it, and `noise` before the last bits are cut off; channels 0…255.
Words veiled(Words colour, Words veil, Words noise)
{
    const Words alpha = __builtin_shufflevector(veil, veil, 3, 3, 3, 3, 7, 7, 7, 7);
    const Words seen = colour - static_cast<Words>(upperProduct(colour, alpha + (alpha >> 8)) * 2);
    return reinterpret_cast<Words>(reinterpret_cast<Unsigned>(seen + veil + noise) >> 7);
}

/// The target's columns from `from` up to `to`, multiples of 4, into `pixels`.
void shade(const Columns &columns, const Row &row, int from, int to, std::uint32_t *pixels)
{
    const auto two = [&](int x) {
        const Words a = loadWords(row.picture + columns.left[static_cast<std::size_t>(x)] * 4);
        const Words b = loadWords(row.picture + columns.left[static_cast<std::size_t>(x) + 1] * 4);
        const Words colour =
            between(__builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11),
                    __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15), loadWords(columns.parts.data() + x * 4));
        const Words veil =
            between(loadWords(row.veil.upper + x * 4), loadWords(row.veil.lower + x * 4), eight(row.veil.part));
        return veiled(colour, veil, loadWords(row.noise + x % SoftImage::patternSide * 4));
    };
    for (int x = from; x < to; x += 4, pixels += 4)
        storePixels(pixels, two(x), two(x + 2));
}

#ifdef KELP_WIDE_LANES
KELP_WIDE __m256i unpackFour(const std::uint32_t *pixels)
{
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(pixels)));
}

/// As many as come in fours; returns how many that are.
KELP_WIDE int blendWide(const Band &band, int from, int to, std::int16_t *blended)
{
    const __m256i ofUpper = _mm256_set1_epi16(static_cast<std::int16_t>(128 - band.part));
    const __m256i ofLower = _mm256_set1_epi16(band.part);
    const int whole = (to - from) & ~3;
    for (int x = 0; x < whole; x += 4) {
        const __m256i sum = _mm256_add_epi16(_mm256_mullo_epi16(unpackFour(band.upper + from + x), ofUpper),
                                             _mm256_mullo_epi16(unpackFour(band.lower + from + x), ofLower));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(blended + x * 4), sum);
    }
    return whole;
}

KELP_WIDE inline __m256i twoPairs(const std::int16_t *first, const std::int16_t *second)
{
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(first))),
                                   _mm_loadu_si128(reinterpret_cast<const __m128i *>(second)), 1);
}

[[gnu::always_inline]] KELP_WIDE inline __m256i fourShaded(const Columns &columns, const Row &row, int x,
                                                           __m256i veilPart)
{
    const int *left = columns.left.data() + x;
    const __m256i even = twoPairs(row.picture + left[0] * 4, row.picture + left[2] * 4);
    const __m256i odd = twoPairs(row.picture + left[1] * 4, row.picture + left[3] * 4);
    const __m256i colour = betweenWide(_mm256_unpacklo_epi64(even, odd), _mm256_unpackhi_epi64(even, odd),
                                       loadFour(columns.parts.data() + x * 4));
    const __m256i veil = betweenWide(loadFour(row.veil.upper + x * 4), loadFour(row.veil.lower + x * 4), veilPart);
    const __m256i alpha = _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(veil, 0xFF), 0xFF);
    const __m256i hidden = _mm256_mulhi_epi16(colour, _mm256_add_epi16(alpha, _mm256_srai_epi16(alpha, 8)));
    const __m256i seen = _mm256_sub_epi16(colour, _mm256_add_epi16(hidden, hidden));
    const __m256i noise = loadFour(row.noise + x % SoftImage::patternSide * 4);
    return _mm256_srli_epi16(_mm256_add_epi16(_mm256_add_epi16(seen, veil), noise), 7);
}

/// The same; multiples of 8.
KELP_WIDE void shadeWide(const Columns &columns, const Row &row, int to)
{
    const __m256i part = _mm256_set1_epi16(row.veil.part);
    for (int x = 0; x < to; x += 8) {
        const __m256i eight = packEight(fourShaded(columns, row, x, part), fourShaded(columns, row, x + 4, part));
        streamEight(row.target + x, eight);
        if (row.copy)
            streamEight(row.copy + x, eight);
    }
}
#endif

} // namespace

Drift Drift::at(double t)
{
    return {meanScale + scaleSwing * std::sin(t / 23), std::sin(t / 31) * 0.03, std::cos(t / 37) * 0.02};
}

void PictureLayer::addShade(SoftImage &veil, double dim)
{
    const Floats black{0, 0, 0, 1};
    for (int y = 0; y < veil.height(); ++y) {
        SoftPixel *row = veil.row(y);
        for (int x = 0; x < veil.width(); ++x) {
            const double distance = std::hypot(veil.across(x) - 0.5, veil.down(y) - 0.5) / std::sqrt(0.5);
            const double way = std::clamp((distance - vignetteStart) / (vignetteEnd - vignetteStart), 0.0, 1.0);
            row[x].cover(black, static_cast<float>(dim));
            row[x].cover(black, static_cast<float>(vignetteOpacity * way * way * (3 - 2 * way)));
        }
    }
}

QImage PictureLayer::fitted(const QImage &picture, const QSize &size)
{
    if (picture.width() < 2 || picture.height() < 2)
        return picture.scaled(picture.size().expandedTo({2, 2}));
    const QSize half((picture.width() + 1) / 2, (picture.height() + 1) / 2);
    if (half.width() < size.width() || half.height() < size.height())
        return picture;
    const QSize wanted = size.boundedTo(picture.size()).expandedTo({2, 2});
    return picture.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage PictureLayer::reduced(const QImage &picture, const QSize &view)
{
    const QSize wanted = (QSizeF(view) * (meanScale + scaleSwing)).toSize();
    if (wanted.isEmpty() || picture.width() <= wanted.width() || picture.height() <= wanted.height())
        return picture;
    return picture.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void PictureLayer::paint(QImage &target, QImage *copy, const QImage &picture, const Drift &drift, const SoftImage &veil)
{
    const int width = target.width();
    const Columns columns(width, picture.width(), drift);
    std::vector<std::int16_t> blended(static_cast<std::size_t>(columns.end - columns.first) * 4);
    SoftImage::Rows veils(veil, 0, width);
    const auto line = [&](int y) { return reinterpret_cast<const std::uint32_t *>(picture.constScanLine(y)); };
    for (int y = 0; y < target.height(); ++y) {
        const Tap tap = tapAt(y, target.height(), picture.height(), drift.scale, drift.down);
        const Band band{line(tap.index), line(tap.index + 1), static_cast<std::int16_t>(tap.part >> 8)};
        const Row row{blended.data(), veils.around(y), SoftImage::pattern(y),
                      reinterpret_cast<std::uint32_t *>(target.scanLine(y)),
                      copy ? reinterpret_cast<std::uint32_t *>(copy->scanLine(y)) : nullptr};
        int ready = 0;
        int x = 0;
#ifdef KELP_WIDE_LANES
        if (hasWideLanes)
            ready = blendWide(band, columns.first, columns.end, blended.data());
#endif
        blend(band, columns.first + ready, columns.end, blended.data() + ready * 4);
#ifdef KELP_WIDE_LANES
        if (hasWideLanes) {
            x = width & ~7;
            shadeWide(columns, row, x);
        }
#endif
        shade(columns, row, x, width & ~3, row.target + x);
        if ((width & 3) != 0) {
            std::uint32_t last[4];
            shade(columns, row, width & ~3, (width | 3) + 1, last);
            std::copy_n(last, width & 3, row.target + (width & ~3));
        }
        if (row.copy)
            std::copy(row.target + x, row.target + width, row.copy + x);
    }
}

} // namespace kelp
